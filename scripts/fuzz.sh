#!/usr/bin/env bash
# Feeds the readers with inputs that nobody wrote, under sanitizers: fuzzers of tests/fuzz, built by preset "fuzz".
#   scripts/fuzz.sh SECONDS            every fuzzer, SECONDS each
#   scripts/fuzz.sh SECONDS SUBJECT... only these (Config, Fault, ...)
#   scripts/fuzz.sh 0                  the stored inputs alone, once each
#   scripts/fuzz.sh --keep SECONDS ... and store what is new in tests/fuzz/corpus, as few inputs as reach the same
# They start from tests/fuzz/corpus and from seeds cut from the examples. Seeds, what the fuzzers learnt and their
# findings stay in build-fuzz/, a second run goes on from there; only --keep writes into the tree.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/quietly.sh

keep=
[ "${1-}" != --keep ] || {
    keep=yes
    shift
}
[ $# -ge 1 ] || {
    echo "Usage: scripts/fuzz.sh [--keep] SECONDS [SUBJECT]..." >&2
    exit 2
}
seconds=$1
shift
subjects=("$@")
[ $# -gt 0 ] || subjects=(Config Fault DynamicParam TextGrid BinaryGrid Number InstructionSets Interface)

work=$PWD/build-fuzz
stored=tests/fuzz/corpus
data=examples/tohoku2011/data

# corner FILE COLUMNS ROWS: the first columns and rows of a text grid as a grid of its own.
corner() {
    awk -v columns="$2" -v rows="$3" -v OFMT=%.17g '
        /^#/ { next }
        ++line == 1 { stepsX = $1 - 1; stepsY = $2 - 1; print columns, rows; next }
        line == 2 {
            print $1, $2, $1 + ($3 - $1) / stepsX * (columns - 1), $2 + ($4 - $2) / stepsY * (rows - 1)
            next
        }
        line <= 2 + rows { for (i = 1; i <= columns; ++i) printf "%s%s", $i, i < columns ? " " : "\n" }' "$1"
}

# Small ones, cut from the examples: a fuzzer gets through more of them, and what it changes matters more.
make_seeds() {
    local seeds=$work/seeds example name
    rm -rf "$seeds"
    mkdir -p "$seeds"/{Config,Fault,DynamicParam,TextGrid,BinaryGrid,Number,InstructionSets,Interface}
    for example in examples/*/TdrConf*.txt examples/*/*/TdrConf*.txt; do
        name=${example//\//-}
        cp "$example" "$seeds/Config/$name"
        sed 's/^#.*//' "$example" >"$seeds/Config/bare-$name"
    done
    for example in examples/band/no_slip.txt "$data"/*satake*.txt; do
        name=${example##*/}
        awk '/^#/ ? comments++ < 1 : lines++ < 2' "$example" >"$seeds/Fault/$name"
    done
    printf '# start, valid time, rise time\n0 0 30\n1 30 30\n2 90.5 0\n' >"$seeds/DynamicParam/three.txt"
    corner examples/band/slope_500m.txt 3 2 >"$seeds/TextGrid/slope.txt"
    corner "$data/tohoku_geo_5min.txt" 2 3 >"$seeds/TextGrid/geo.txt"
    corner "$data/tohoku_utm54_1800m.txt" 4 4 >"$seeds/TextGrid/utm.txt"
    # x and y of the first point, 3 columns, 2 rows, spacing 500; six depths of -1.
    {
        printf '\0\0\0\0\0\152\370\100\0\0\0\0\200\204\036\101\3\0\0\0\2\0\0\0\0\0\372\103'
        printf '\0\0\200\277%.0s' 1 2 3 4 5 6
    } >"$seeds/BinaryGrid/slope.bin"
    for name in 5 -7674.25 4403986.1 +.5e-3 0x1.8p3 1e400 4.9e-324 inf 'nan(12)' 12abc; do
        printf '%s 7' "$name" >"$seeds/Number/$name"
    done
    # The first byte says what is compared; the rest are numbers, and any bytes do.
    gzip -cn "$data/tohoku_geo_5min.txt" >"$seeds/bytes"
    for name in 0 1 2 3 4 5 6 7; do
        { printf '%b' "\\$name" && head -c $((3000 * name + 1500)) "$seeds/bytes" | tail -c 1200; } \
            | tee "$seeds/InstructionSets/$name" >"$seeds/Interface/$name"
    done
}

# Longest input: past the buffer of one line of each text format.
longest() {
    case $1 in
        TextGrid) echo 10000 ;;
        BinaryGrid | Number) echo 512 ;;
        *) echo 2500 ;;
    esac
}

# options SUBJECT: generous limits, so that only a reader that hangs or grows is a finding, on a busy machine too.
options() {
    printf '%s\n' -timeout=60 -rss_limit_mb=2048 "-max_len=$(longest "$1")" "-artifact_prefix=$work/findings/$1-"
    # Words of the text formats.
    case $1 in
        BinaryGrid | InstructionSets | Interface) ;;
        *) echo -dict=tests/fuzz/text.dict ;;
    esac
}

# fuzzer SUBJECT OPTION...
fuzzer() {
    local subject=$1 words
    shift
    mapfile -t words < <(options "$subject")
    quietly "$work/$subject.log" "$work/tests/fuzz/fuzz_$subject" "${words[@]}" "$@" || {
        echo "$subject: a finding in build-fuzz/findings/" >&2
        return 1
    }
}

# fuzz SUBJECT: the stored inputs once each, then new ones.
fuzz() {
    local subject=$1 corpus=$work/corpus/$1
    mkdir -p "$corpus" "$work/findings"
    [ -z "$keep" ] || mkdir -p "$stored/$subject"
    fuzzer "$subject" -runs=0 "$stored/$subject"
    printf '%-15s %9d stored inputs\n' "$subject" "$(find "$stored/$subject" -type f | wc -l)"
    [ "$seconds" -gt 0 ] || return 0
    fuzzer "$subject" -max_total_time="$seconds" -print_final_stats=1 "$corpus" "$stored/$subject" "$work/seeds/$subject"
    awk -v subject="$subject" '/^stat::number_of_executed_units:/ { n = $2 }
        END { printf "%-15s %9d inputs\n", subject, n; exit n == 0 }' "$work/$subject.log"
}

# keep SUBJECT: fewest and smallest inputs that reach what stored ones, learnt ones and seeds reach.
keep() {
    local subject=$1 fewest=$work/fewest/$1
    rm -rf "$fewest"
    mkdir -p "$fewest"
    fuzzer "$subject" -merge=1 "$fewest" "$stored/$subject" "$work/corpus/$subject" "$work/seeds/$subject"
    rm -rf "${stored:?}/$subject"
    cp -R "$fewest" "$stored/$subject"
    printf '%-15s %9d inputs kept, %s bytes\n' "$subject" "$(find "$fewest" -type f | wc -l)" \
        "$(find "$fewest" -type f -exec cat {} + | wc -c)"
}

make_seeds
failed=0
running=0
for subject in "${subjects[@]}"; do
    if [ "$running" -eq "$(getconf _NPROCESSORS_ONLN)" ]; then
        wait -n || failed=1
        running=$((running - 1))
    fi
    (
        fuzz "$subject"
        [ -z "$keep" ] || keep "$subject"
    ) &
    running=$((running + 1))
done
while [ "$running" -gt 0 ]; do
    wait -n || failed=1
    running=$((running - 1))
done
exit "$failed"
