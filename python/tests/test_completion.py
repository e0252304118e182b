"""The completion of the command line in bash."""

import os
import shutil
import subprocess

import pytest

from conftest import ROOT

# what is typed, the last word of which is completed -> what is offered, and what is not
TYPED = {
    "tdr ": ({"convert", "ensemble", "info", "plot", "run", "source"}, {"--help", "status"}),
    "tdr so": ({"source"}, {"info", "--help"}),
    "tdr source model.fsp --k": ({"--kajiura"}, {"--slope"}),
    "tdr source --frame ": ({"plane", "globe", "utm"}, {"info"}),
    "tdr source --frame u": ({"utm"}, {"plane"}),
    "tdr ensemble s": ({"status", "show"}, {"source"}),
    "tdr ensemble run table.nc --f": ({"--fields"}, {"--at"}),
    "tdr source no/such -": ({"--slope", "--help"}, {"--json"}),
}
# Files are left to the shell.
FILES = ["tdr source out", "tdr source a/b.fsp "]

SCRIPT = """
source "$1"
alias tdr="$TDR"
shift
for typed; do
    read -ra COMP_WORDS <<<"$typed"
    [[ $typed == *' ' ]] && COMP_WORDS+=('')
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    _tdr
    echo "${COMPREPLY[*]}"
done
"""


def test_what_is_offered_is_what_help_shows():
    if not shutil.which("bash"):
        pytest.skip("there is no bash")
    # One shell for all, which asks for each help once.
    command = ["bash", "-c", SCRIPT, "bash", str(ROOT / "python" / "completion" / "tdr"), *TYPED, *FILES]
    environment = {**os.environ, "TDR": str(ROOT / "python" / "tdr")}
    done = subprocess.run(command, env=environment, capture_output=True, text=True, check=True)
    assert done.stderr == ""
    offered = [set(line.split()) for line in done.stdout.split("\n")[:-1]]
    assert len(offered) == len(TYPED) + len(FILES)
    for (typed, (some, none)), words in zip(TYPED.items(), offered):
        assert some <= words and not none & words, typed
    assert offered[len(TYPED) :] == [set()] * len(FILES)
