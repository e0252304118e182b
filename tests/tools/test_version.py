"""The version stands in the file VERSION; project, package and changelog agree with it. The program's is its own."""

import importlib.util
import os
import re
import subprocess
import unittest
from email.utils import parsedate_to_datetime
from pathlib import Path

_TREE = Path(__file__).resolve().parents[2]


class Version(unittest.TestCase):
    def setUp(self) -> None:
        self.version = (_TREE / "VERSION").read_text(encoding="utf-8")
        self.assertRegex(self.version, r"^\d+\.\d+\.\d+\n$")
        self.version = self.version.strip()

    def test_the_project(self) -> None:
        self.assertEqual(os.environ["TIDORA_PROJECT_VERSION"], self.version)

    def test_the_banner_of_the_program_is_a_fixed_text(self) -> None:
        result = subprocess.run([os.environ["TIDORA_PROGRAM"]], stdout=subprocess.PIPE, text=True, check=True)
        self.assertEqual(result.stdout.splitlines()[1].strip(), "Tidora version 1.0.938")
        page = (_TREE / "docs" / "versioning.md").read_text(encoding="utf-8")
        self.assertIn("`Tidora version 1.0.938`", page)

    def test_the_package(self) -> None:
        spec = importlib.util.spec_from_file_location("version", _TREE / "python" / "tidora" / "version.py")
        assert spec is not None and spec.loader is not None
        module = importlib.util.module_from_spec(spec)
        spec.loader.exec_module(module)
        self.assertEqual(module.VERSION, self.version)
        project = (_TREE / "pyproject.toml").read_text(encoding="utf-8")
        self.assertEqual(re.findall(r"^version = (.*)", project, re.MULTILINE), ['{ file = "VERSION" }'])

    def test_the_soname_that_the_package_asks_for(self) -> None:
        binding = (_TREE / "python" / "tidora" / "engine" / "binding.py").read_text(encoding="utf-8")
        project = (_TREE / "CMakeLists.txt").read_text(encoding="utf-8")
        (number,) = re.findall(r"\bSOVERSION (\d+)", project)
        self.assertEqual(re.findall(r'^_SONAME = "(.*)"', binding, re.MULTILINE), [f"libtidora.so.{number}"])

    def test_the_newest_entry_of_the_changelog(self) -> None:
        text = (_TREE / "CHANGELOG.md").read_text(encoding="utf-8")
        newest, dated = re.findall(r"^## (\S+)(?: - (\S+))?$", text, re.MULTILINE)[0]
        self.assertEqual(newest, self.version)
        debian = (_TREE / "debian" / "changelog").read_text(encoding="utf-8")
        self.assertEqual(re.findall(r"^tidora \((.*)\)", debian, re.MULTILINE)[0], self.version)
        signed = re.findall(r"^ -- .* <.*>  (.*)$", debian, re.MULTILINE)[0]
        self.assertEqual(parsedate_to_datetime(signed).date().isoformat(), dated)


if __name__ == "__main__":
    unittest.main()
