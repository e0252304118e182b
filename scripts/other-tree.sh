# shellcheck shell=bash
# Sourced by the scripts that compare two trees of this project. Everything they make is below build-compare/, which
# git ignores; what is there from an earlier comparison is used again.

compare_folder=$PWD/build-compare

# tree_of COMMIT: prints the folder that holds the files of that commit.
tree_of() {
    local id folder
    id=$(git rev-parse --verify --quiet --short=12 "$1^{commit}") || {
        echo "There is no commit $1." >&2
        return 2
    }
    folder=$compare_folder/$id/tree
    if [ ! -d "$folder" ]; then
        rm -rf "$folder.part"
        mkdir -p "$folder.part"
        git archive "$id" | tar -x -C "$folder.part"
        mv "$folder.part" "$folder"
    fi
    echo "$folder"
}

# python_with MODULE: prints the first Python that has the module.
python_with() {
    local python
    for python in "${TIDORA_PYTHON:-}" python3 /usr/bin/python3; do
        if [ -n "$python" ] && "$python" -c "import $1" 2>/dev/null; then
            echo "$python"
            return
        fi
    done
    echo "No Python with $1 is there (Debian: apt-get install python3-$1)." >&2
    return 2
}

# build_tree LOG SOURCE BUILD TARGETS OPTION...: configures and builds; TARGETS are words.
build_tree() {
    local log=$1 source=$2 build=$3 targets=$4
    shift 4
    mkdir -p "$build"
    # A build folder that is there already keeps its generator.
    local generator=()
    [ -f "$build/CMakeCache.txt" ] || generator=(-G Ninja)
    quietly "$log" cmake -S "$source" -B "$build" ${generator[@]+"${generator[@]}"} -DCMAKE_BUILD_TYPE=Release "$@"
    # shellcheck disable=SC2086 # a word for each target
    quietly "$log" cmake --build "$build" --parallel "$(getconf _NPROCESSORS_ONLN)" --target $targets
}
