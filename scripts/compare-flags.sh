#!/usr/bin/env bash
# Flags on a caller's command line must not change a bit: builds the program with and without them and compares both
# over generated configurations, geographic ones too, byte by byte.
#   scripts/compare-flags.sh '-march=native -ffp-contract=fast'
#   scripts/compare-flags.sh FLAGS OPTION...   options as those of scripts/compare-bytes.sh
# CXX, where it is set, is the compiler.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/quietly.sh
. scripts/other-tree.sh

[ $# -ge 1 ] || {
    sed -n '2,/^set/s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2
    exit 2
}
flags=$1
shift
python=$(python_with numpy) || exit 2
for side in without with; do
    build=$compare_folder/flags-$side
    echo "Building $build ..."
    mkdir -p "$build"
    given=
    [ "$side" = without ] || given=$flags
    build_tree "$build.log" tests/compare "$build" Tidora -DTIDORA_TREE="$PWD" -DCMAKE_CXX_FLAGS="$given" || exit 2
done
exec "$python" -B tests/compare/compare_bytes.py --scratch "$compare_folder" --exact \
    "$compare_folder/flags-without/tree/Tidora" "$compare_folder/flags-with/tree/Tidora" --only 'generated/*' "$@"
