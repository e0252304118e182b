"""The check of the rooms: each rule is broken once, and must be named."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from typing import Dict, Tuple

_SCRIPT = Path(__file__).resolve().parents[2] / "scripts" / "include-graph"
_SOUND = {
    "src/support/A.h": "#pragma once\n",
    "src/grid/B.h": '#include "support/A.h"\n',
    "src/fault/DynamicParam.h": '#include "grid/B.h"\n',
    "src/region/Region.h": '#include "fault/DynamicParam.h"\n/*\n#include "linear/Linear.h"\n*/\n',
    "src/linear/Linear.h": "",
    "src/projection/P.cpp": "#include <proj.h>\n",
    "include/tidora/tidora.h": '#include "grid/B.h"\n',
    "python/tidora/__init__.py": "from .fields.shape import area\n",
    "python/tidora/errors.py": "def problem(): pass\n",
    "python/tidora/fields/__init__.py": "",
    "python/tidora/fields/shape.py": "from ..errors import problem\nfrom .. import errors\nerrors.__doc__\n",
}


def _check(changed: Dict[str, str]) -> Tuple[int, str]:
    with tempfile.TemporaryDirectory() as folder:
        for name, content in dict(_SOUND, **changed).items():
            path = Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(content, encoding="utf-8")
        command = [sys.executable, "-B", str(_SCRIPT), "--tree", folder]
        result = subprocess.run(command, stdout=subprocess.PIPE, text=True)
    return result.returncode, result.stdout


class Rules(unittest.TestCase):
    def _refuses(self, words: str, changed: Dict[str, str]) -> None:
        status, text = _check(changed)
        self.assertEqual(status, 1, text)
        self.assertIn(words, text)

    def test_a_sound_tree_passes(self) -> None:
        status, text = _check({})
        self.assertEqual(status, 0, text)
        self.assertEqual(text.count("no rule is broken"), 2)

    def test_an_arrow_that_points_up(self) -> None:
        self._refuses(
            "grid -> region is not allowed: grid/B.h -> region/Region.h",
            {"src/grid/B.h": '#include "region/Region.h"\n'},
        )

    def test_another_header_of_the_fault(self) -> None:
        self._refuses(
            "region -> fault is not allowed: region/C.cpp -> fault/Fault.h",
            {"src/fault/Fault.h": "", "src/region/C.cpp": '  #  include "fault/Fault.h"\n'},
        )

    def test_rooms_in_a_circle(self) -> None:
        self._refuses("rooms in a circle: grid, support", {"src/support/C.h": '#include "grid/B.h"\n'})

    def test_files_of_one_room_in_a_circle(self) -> None:
        self._refuses(
            "files in a circle: support/A.h, support/C.h",
            {"src/support/C.h": '#include "support/A.h"\n', "src/support/A.h": '#include "support/C.h"\n'},
        )

    def test_a_room_that_no_one_knows(self) -> None:
        self._refuses("the room cellar is not in the table", {"src/cellar/C.h": ""})

    def test_a_file_that_is_not_there(self) -> None:
        self._refuses('includes "support/Z.h", which is no file', {"src/grid/B.h": '#include "support/Z.h"\n'})

    def test_proj_elsewhere(self) -> None:
        self._refuses("only projection may", {"src/grid/C.cpp": "#include <proj.h>\n"})

    def test_a_python_module_that_looks_up(self) -> None:
        self._refuses(
            "fields -> commands is not allowed",
            {
                "python/tidora/commands/main.py": "",
                "python/tidora/fields/shape.py": "def late():\n    from ..commands import main\n",
            },
        )

    def test_python_modules_in_a_circle(self) -> None:
        self._refuses(
            "files in a circle: tidora.fields.shape, tidora.fields.size",
            {
                "python/tidora/fields/shape.py": "from .size import count\n",
                "python/tidora/fields/size.py": "import tidora.fields.shape\n",
            },
        )

    def test_private_names_of_another_module(self) -> None:
        self._refuses(
            "tidora.fields.shape imports _hidden from tidora.errors",
            {"python/tidora/fields/shape.py": "from ..errors import _hidden\n"},
        )
        self._refuses(
            "tidora.fields.shape uses tidora.errors._hidden",
            {"python/tidora/fields/shape.py": "from .. import errors\nerrors._hidden()\n"},
        )


if __name__ == "__main__":
    unittest.main()
