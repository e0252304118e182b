#!/usr/bin/env bash
# Feeds the readers with inputs that nobody wrote, under sanitizers: fuzzers of tests/fuzz, built by preset "fuzz".
#   scripts/fuzz.sh SECONDS            every fuzzer, SECONDS each
#   scripts/fuzz.sh SECONDS SUBJECT... only these (Config, Fault, ...)
# Seeds, what the fuzzers learnt and their findings stay in build-fuzz/. A second run goes on from the first.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/quietly.sh

[ $# -ge 1 ] || {
    echo "Usage: scripts/fuzz.sh SECONDS [SUBJECT]..." >&2
    exit 2
}
seconds=$1
shift
subjects=("$@")
[ $# -gt 0 ] || subjects=(Config Fault DynamicParam TextGrid BinaryGrid Number InstructionSets)

work=$PWD/build-fuzz
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
    mkdir -p "$seeds"/{Config,Fault,DynamicParam,TextGrid,BinaryGrid,Number,InstructionSets}
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
            >"$seeds/InstructionSets/$name"
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

# fuzz SUBJECT: generous limits, so that only a reader that hangs or grows is a finding, on a busy machine too.
fuzz() {
    local subject=$1 corpus=$work/corpus/$1 log=$work/$1.log options
    mkdir -p "$corpus" "$work/findings"
    options=(-max_total_time="$seconds" -timeout=60 -rss_limit_mb=2048 -max_len="$(longest "$subject")"
        -artifact_prefix="$work/findings/$subject-" -print_final_stats=1)
    [[ $subject = BinaryGrid || $subject = InstructionSets ]] || options+=(-dict=tests/fuzz/text.dict)
    quietly "$log" "$work/tests/fuzz/fuzz_$subject" "${options[@]}" "$corpus" "$work/seeds/$subject" || {
        echo "$subject: a finding in build-fuzz/findings/" >&2
        return 1
    }
    awk -v subject="$subject" '/^stat::number_of_executed_units:/ { n = $2 }
        END { printf "%-15s %9d inputs\n", subject, n; exit n == 0 }' "$log"
}

make_seeds
failed=0
for subject in "${subjects[@]}"; do
    fuzz "$subject" || failed=1
done
exit "$failed"
