#!/usr/bin/env bash
# How much faster or slower than another commit: benchmarks and whole runs of the program, old and new in turns.
#   scripts/compare-speed.sh COMMIT               all benchmarks: some five minutes a turn of each side
#   scripts/compare-speed.sh COMMIT NAME          only those whose name has NAME: kernel, plane, geographic, ...
#   scripts/compare-speed.sh COMMIT --rounds 9    turns of each side, 5 unless said
# "New" are the files as they lie here. Printed is how many times as fast the new side is: median, least and most of
# the turns. Each benchmark is a ratio to the literal version within its own process, which a busy machine moves less
# than a time; whole runs are compared by processor time. Medians below 0.97 are marked.
# Exit status: 0, whatever the times are; 2 when something could not be built or run.
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
old_build=${old%/tree}/speed
new_build=$compare_folder/here/speed

# benchmarks TREE BUILD
benchmarks() {
    echo "Building $2 ..."
    mkdir -p "$2"
    build_tree "$2.log" "$1" "$2" "Tidora tidora_bench" -DTIDORA_BUILD_TESTS=OFF -DTIDORA_BUILD_BENCHMARKS=ON || exit 2
}

benchmarks "$old" "$old_build"
benchmarks "$PWD" "$new_build"
exec "$python" -B tests/compare/compare_speed.py --scratch "$compare_folder" "$old_build" "$new_build" "$@"
