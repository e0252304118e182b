# shellcheck shell=bash
# Sourced by the scripts of this project.

# quietly LOG COMMAND...: runs the command with its output in LOG, and without standard input. When it fails, shows
# the last lines of LOG and returns its status.
quietly() {
    local log=$1 status=0
    shift
    "$@" >"$log" 2>&1 </dev/null || status=$?
    if [ "$status" -ne 0 ]; then
        {
            echo
            echo "Failed with exit status $status: $*"
            echo "The last lines of $log:"
            tail -n 40 "$log" | sed 's/^/    /'
        } >&2
    fi
    return "$status"
}
