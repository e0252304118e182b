"""What libtidora.so exports: as tidora.symbols and the Debian package list, tidora.h declares, tidora.f90 binds and
engine.md explains."""

import os
import re
import subprocess
import unittest
from pathlib import Path

_TREE = Path(__file__).resolve().parents[2]


def read(name: str) -> str:
    return (_TREE / name).read_text(encoding="utf-8")


def numbers(release: str) -> tuple[int, ...]:
    return tuple(map(int, release.split(".")))


class Symbols(unittest.TestCase):
    def setUp(self) -> None:
        lines = [line.split() for line in read("src/api/tidora.symbols").splitlines() if not line.startswith("#")]
        self.assertTrue(all(len(line) == 3 for line in lines))
        self.assertEqual(lines, sorted(lines))
        self.node_of = {name: node for name, node, _ in lines}
        self.assertEqual(len(self.node_of), len(lines))
        self.release_of = {name: release for name, _, release in lines}

    def test_the_library(self) -> None:
        command = [os.environ["TIDORA_NM"], "-D", "--defined-only", os.environ["TIDORA_SHARED"]]
        shown = subprocess.run(command, stdout=subprocess.PIPE, text=True, check=True).stdout
        exported = [line.split()[-2:] for line in shown.splitlines()]
        nodes = {name for kind, name in exported if kind == "A"}
        functions = sorted(name for kind, name in exported if kind != "A")
        self.assertEqual(functions, sorted(f"{name}@@{node}" for name, node in self.node_of.items()))
        self.assertEqual(nodes, set(self.node_of.values()))

    def test_the_script_of_the_linker(self) -> None:
        script = re.sub(r"#.*", "", read("src/api/tidora.map"))
        found = {}
        for node, body in re.findall(r"(TIDORA_[\d.]+)\s*\{(.*?)\}", script, re.DOTALL):
            for name in re.findall(r"\b(tidora_\w+);", body):
                found[name] = node
        self.assertEqual(found, self.node_of)
        self.assertRegex(script, r"local:\s*\*;")

    def test_the_header(self) -> None:
        code = re.sub(r"/\*.*?\*/", "", read("include/tidora/tidora.h"), flags=re.DOTALL)
        declared = re.findall(r"^TIDORA_API\b[^;(]*?(\w+)\(", code, re.MULTILINE)
        self.assertEqual(sorted(declared), sorted(self.node_of))
        # Every name that a call could have: none without TIDORA_API, but for the type of the callback.
        called = set(re.findall(r"\b(tidora_\w+)\)?\(", code)) - {"tidora_progress"}
        self.assertEqual(called, set(self.node_of))

    def test_the_module_of_fortran(self) -> None:
        """All but those that return a text of C, for which Fortran has tidora_text()."""
        module = re.sub(r"!.*|&\s*\n\s*", "", read("include/tidora/tidora.f90"))
        bound = re.findall(r"function (\w+)\([^)]*\) bind\(c\)", module)
        self.assertEqual(sorted(bound), sorted(set(self.node_of) - {"tidora_status_text", "tidora_version"}))

    def test_the_debian_package(self) -> None:
        """Every symbol with its first release, and every node with that of the first symbol in it."""
        head, field, *lines = read("debian/libtidora1.symbols").splitlines()
        self.assertEqual(head, "libtidora.so.1 libtidora1 #MINVER#")
        self.assertEqual(field, "* Build-Depends-Package: libtidora-dev")
        first = {node: min((self.release_of[name] for name in self.node_of if self.node_of[name] == node), key=numbers)
                 for node in self.node_of.values()}  # fmt: skip
        expected = [f" {node}@{node} {release}" for node, release in first.items()]
        expected += [f" {name}@{node} {self.release_of[name]}" for name, node in self.node_of.items()]
        self.assertEqual(sorted(lines), sorted(expected))

    def test_the_page(self) -> None:
        page = read("docs/engine.md").split("## C and Fortran")[1].split("\n## ")[0]
        self.assertEqual([name for name in self.node_of if f"`{name}`" not in page], [])

    def test_no_release_is_of_the_future(self) -> None:
        now = numbers(read("VERSION"))
        self.assertEqual([r for r in set(self.release_of.values()) if numbers(r) > now], [])


if __name__ == "__main__":
    unittest.main()
