"""The check of public names sees what headers and package declare, and names what a site lacks."""

import contextlib
import importlib.machinery
import importlib.util
import io
import sys
import tempfile
import unittest
import zlib
from pathlib import Path
from unittest import mock

_TREE = Path(__file__).resolve().parents[2]
_LOADER = importlib.machinery.SourceFileLoader("check_names", str(_TREE / "scripts" / "check-names"))
_SPEC = importlib.util.spec_from_loader("check_names", _LOADER)
assert _SPEC is not None
check = importlib.util.module_from_spec(_SPEC)
_LOADER.exec_module(check)

EXPECTED = {
    "py": {"tidora.deform", "tidora.FileError", "tidora.unit_sources"},
    "c": {"tidora_deform", "tidora_nodes", "tidora_status", "TIDORA_FRAME_UTM", "tidora_progress", "tidora_version"},
    "cpp": {"tidora::Region", "tidora::FAULT_PARAM", "tidora::RType", "dc3d_", "ub0_", "xy2ll_", "tidora::SlipShare"},
}


class CheckNames(unittest.TestCase):
    def setUp(self) -> None:
        self.names = {
            "py": check.python_names(_TREE),
            "c": check.c_names(_TREE),
            "cpp": check.cxx_names(_TREE),
        }

    def test_every_kind_of_declaration_is_seen(self) -> None:
        for domain, expected in EXPECTED.items():
            self.assertLessEqual(expected, self.names[domain])
        self.assertNotIn("TIDORA_API", self.names["c"])

    def status_without(self, left_out: str) -> "tuple[int, str]":
        """Exit status and complaints of the check, over a site that has every name but one."""
        lines = [
            f"{name} {domain}:function 1 page.html#$ -"
            for domain, names in self.names.items()
            for name in sorted(names - {left_out})
        ]
        head = b"# Sphinx inventory version 2\n# Project: x\n# Version: 1\n# The rest is packed.\n"
        with tempfile.TemporaryDirectory() as folder:
            (Path(folder) / "objects.inv").write_bytes(head + zlib.compress("\n".join(lines).encode()))
            said = io.StringIO()
            with mock.patch.object(sys, "argv", ["check-names", folder]), contextlib.redirect_stderr(said):
                with contextlib.redirect_stdout(io.StringIO()):
                    return check.main(), said.getvalue()

    def test_a_name_that_is_missing_is_named(self) -> None:
        self.assertEqual(self.status_without(""), (0, ""))
        for name in ("tidora.deform", "tidora_shares", "TIDORA_OK", "tidora::Fault", "uc_"):
            with self.subTest(name):
                self.assertEqual(self.status_without(name), (1, f"{name}: is not on the site\n"))


if __name__ == "__main__":
    unittest.main()
