"""The manual pages are what the documents say, and their readers have nothing to complain of."""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from collections import Counter
from pathlib import Path

_TREE = Path(__file__).resolve().parents[2]
_DOCUMENTS = {"Tidora.1": "manual.md", "tdr.1": "tdr.md"}


def said(*command: str) -> str:
    """What a reader of pages shows; what it complains of comes first."""
    utf8 = {**os.environ, "LC_ALL": "C.UTF-8"}
    result = subprocess.run(command, env=utf8, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    return ("" if result.returncode == 0 else f"exit status {result.returncode}\n") + result.stdout


def words(text: str) -> list[str]:
    return re.findall(r"[A-Za-z0-9][A-Za-z0-9_]+", text)


class ManPages(unittest.TestCase):
    def setUp(self) -> None:
        self.folder = Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        script = _TREE / "scripts" / "man_pages"
        subprocess.run([sys.executable, "-B", str(script), str(self.folder)], check=True)
        self.pages = {page: str(self.folder / page) for page in _DOCUMENTS}
        self.assertEqual(sorted(os.listdir(self.folder)), sorted(_DOCUMENTS))

    def need(self, tool: str) -> None:
        if not shutil.which(tool):
            self.skipTest(f"there is no {tool}")

    def test_groff_has_no_warning(self) -> None:
        self.need("groff")
        for page in self.pages.values():
            self.assertEqual(said("groff", "-man", "-ww", "-Tutf8", "-z", page), "")

    def test_man_has_no_warning(self) -> None:
        self.need("man")
        for page in self.pages.values():
            self.assertEqual(said("man", "--warnings", "-l", "-Tutf8", "-Z", page).split("x T")[0], "")

    def test_mandoc_has_no_warning(self) -> None:
        self.need("mandoc")
        for page in self.pages.values():
            self.assertEqual(said("mandoc", "-T", "lint", "-W", "warning", page), "")

    def test_every_word_of_a_document_is_on_its_page(self) -> None:
        """As often as in the document, but for addresses of links, pictures, comments, and the headings of columns."""
        self.need("groff")
        for page, document in _DOCUMENTS.items():
            text = (_TREE / "docs" / document).read_text(encoding="utf-8")
            navigation = text.index("\n\n", text.index("\n[")) + 2
            text = re.sub(r"<!--.*?-->|```\w*|^\|.*\n(?=\|[-| ]+\|$)|!\[.*?\]\(.*?\)", "", text[navigation:], 0, re.M)
            expected = Counter(words(re.sub(r"\]\(.*?\)", "]", text)))
            # Long lines, no hyphenation, no escapes of a terminal.
            options = ["-rLL=4000n", "-rHY=0", "-P-c", "-P-b", "-P-u"]
            shown = Counter(words(said("groff", "-man", "-Tutf8", *options, self.pages[page])))
            self.assertGreater(sum(expected.values()), 1000)
            upper = Counter(words(re.sub(r"^(?!## ).*$", "", text, flags=re.M)))  # headings may be shouted
            self.assertEqual(expected - shown - upper, Counter(), page)

    def test_headings_and_release(self) -> None:
        version = (_TREE / "VERSION").read_text(encoding="utf-8").strip()
        for page, document in _DOCUMENTS.items():
            roff = Path(self.pages[page]).read_text(encoding="ascii")
            headings = [line[4:].lower() for line in roff.splitlines() if line.startswith(".SH ")]
            text = (_TREE / "docs" / document).read_text(encoding="utf-8")
            expected = [line[3:].lower() for line in text.splitlines() if line.startswith("## ")]
            self.assertEqual(headings[:3] + headings[-1:], ["name", "synopsis", "description", "see also"])
            self.assertEqual(headings[3:-1], [heading for heading in expected if heading != "synopsis"])
            self.assertRegex(roff.splitlines()[0], rf'^\.TH {page[:-2]} 1 "\d{{4}}-\d\d-\d\d" "Tidora {version}"')
            self.assertNotRegex(roff, r"\]\(|<!--|```")


if __name__ == "__main__":
    unittest.main()
