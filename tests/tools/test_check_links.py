"""The check of links names each kind of dead link, and nothing else."""

import importlib.machinery
import importlib.util
import tempfile
import unittest
from pathlib import Path

_TREE = Path(__file__).resolve().parents[2]
_LOADER = importlib.machinery.SourceFileLoader("check_links", str(_TREE / "scripts" / "check-links"))
_SPEC = importlib.util.spec_from_loader("check_links", _LOADER)
assert _SPEC is not None
check = importlib.util.module_from_spec(_SPEC)
_LOADER.exec_module(check)

OTHER = "# A (b) c-d\n\n## `x` of [y](z)\n\n## Twice\n\n## Twice\n\n```sh\n# no heading\n```\n"

GOOD = """[a](other.md) [b](other.md#a-b-c-d) [c](other.md#x-of-y) [d](other.md#twice-1) [e](folder) [f](#here)
[g](https://a.org/b?c=d#e) <https://a.org> ![h](folder/picture.png "words") `[i](nowhere)`
<img src="folder/picture.png">

# Here

```text
[j](nowhere)
```

[k]: other.md
"""

BAD = {
    "[a](nowhere.md)": "is not there",
    "![a](nowhere.png)": "is not there",
    "[a](other.md#b)": "has no such heading",
    "[a](other.md#no-heading)": "has no such heading",
    "[a](other.md#twice-2)": "has no such heading",
    "[a](#b)": "has no such heading",
    "[a]: nowhere.md": "is not there",
    '<img src="nowhere.png">': "is not there",
    "[a](https://b)": "names no host",
    "[a](https:/b.org/c)": "names no host",
    "[a](htps://b.org)": "has the unknown scheme htps",
    "<https://>": "names no host",
}

PAGE = '<html><body><h1 id="here">x</h1><a href="#here">a</a><a href="below/other.html#there">b</a>%s</body></html>'

BAD_ON_SITE = {
    '<a href="nowhere.html">c</a>': "is not there",
    '<a href="below">c</a>': "is not there",
    '<a href="#there">c</a>': "has no such anchor",
    '<a href="below/other.html#here">c</a>': "has no such anchor",
    '<a href="http://b">c</a>': "names no host",
    '<img src="nowhere.png">': "is not there",
    '<img src="https://b.org/c.png">': "is loaded from elsewhere",
    '<script src="//b.org/c.js"></script>': "is loaded from elsewhere",
    '<link rel="stylesheet" href="https://b.org/c.css">': "is loaded from elsewhere",
}


class CheckLinks(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        (self.folder / "folder").mkdir()
        (self.folder / "folder" / "picture.png").touch()
        (self.folder / "other.md").write_text(OTHER, encoding="utf-8")

    def document_faults(self, text: str) -> "list[str]":
        (self.folder / "page.md").write_text(text, encoding="utf-8")
        return [fault for fault in check.document_faults(self.folder) if fault.startswith("page.md")]

    def test_links_that_lead_somewhere_are_all_seen_and_none_is_named(self) -> None:
        self.assertEqual(len(check.links(GOOD)), 11)
        self.assertEqual(self.document_faults(GOOD), [])

    def test_every_dead_link_of_a_document_is_named_with_its_fault(self) -> None:
        for text, fault in BAD.items():
            with self.subTest(text):
                found = self.document_faults(text)
                self.assertEqual([line.split(": ")[-1] for line in found], [fault])

    def site_faults(self, addition: str) -> "list[str]":
        site = self.folder / "site"
        (site / "below").mkdir(parents=True, exist_ok=True)
        (site / "index.html").write_text(PAGE % addition, encoding="utf-8")
        (site / "below" / "other.html").write_text('<p id="there">x</p><a href="../index.html">y</a>', encoding="utf-8")
        return list(check.site_faults(site))

    def test_every_dead_link_of_a_site_is_named_with_its_fault(self) -> None:
        self.assertEqual(self.site_faults(""), [])
        for text, fault in BAD_ON_SITE.items():
            with self.subTest(text):
                self.assertEqual([line.split(": ")[-1] for line in self.site_faults(text)], [fault])

    def test_a_style_sheet_loads_nothing_from_elsewhere(self) -> None:
        self.site_faults("")
        (self.folder / "site" / "a.css").write_text("@import url(https://b.org/c.css);", encoding="utf-8")
        self.assertEqual(len(list(check.site_faults(self.folder / "site"))), 1)

    def test_a_site_without_pages_is_a_fault(self) -> None:
        (self.folder / "empty").mkdir()
        self.assertEqual(len(list(check.site_faults(self.folder / "empty"))), 1)


if __name__ == "__main__":
    unittest.main()
