#!/usr/bin/env bash
# Proves that a change moved no byte: runs the program of another commit and that of the files as they lie here over all
# examples, all command-line cases and generated configurations, on every instruction set of this machine, and compares
# standard output, standard error (processor times masked), exit status and every file written.
#   scripts/compare-bytes.sh COMMIT
#   scripts/compare-bytes.sh COMMIT --runs 1000 --seed 7 --only 'generated/*'
#   --runs N     generated configurations, 300 unless said
#   --seed N     where they start; without it a new one, which is printed
#   --only GLOB  only runs whose name matches: examples/..., cases/..., generated/...
#   --exact      geographic runs may not move either
#   --keep       leave the folders of runs that differ in build-compare/differing/
# Exit status: 0 nothing differs, 1 something does, 2 the comparison could not be made. Geographic runs are counted
# apart: see tests/compare/README.md.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/quietly.sh
. scripts/other-tree.sh

case "${1-}" in
    "" | -*)
        sed -n '2,/^set/s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2
        exit 2
        ;;
esac
commit=$1
shift
old=$(tree_of "$commit") || exit 2
python=$(python_with numpy) || exit 2

# program TREE BUILD: builds the program of a tree with the driver that chooses its instruction set.
program() {
    echo "Building $2 ..."
    mkdir -p "$2"
    build_tree "$2.log" tests/compare "$2" Tidora -DTIDORA_TREE="$1" || exit 2
}

program "$old" "${old%/tree}/bytes"
program "$PWD" "$compare_folder/here/bytes"
found() {
    find "$1" -name Tidora -type f -perm -u+x | head -n 1
}
exec "$python" -B tests/compare/compare_bytes.py "$(found "${old%/tree}/bytes")" "$(found "$compare_folder/here/bytes")" \
    --scratch "$compare_folder" "$@"
