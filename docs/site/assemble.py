"""Brings together what Sphinx makes the site of: the documents of the tree, and pages that list names and pictures.

    python3 docs/site/assemble.py TREE XML TARGET

XML is what Doxygen says of the headers.

Documents keep their places relative to each other. A link to another file of the tree takes a copy of it along, one to
a folder leads to its README; without one it becomes plain text.
"""

import ast
import os
import re
import shutil
import sys
from xml.etree import ElementTree
from pathlib import Path, PurePosixPath
from typing import Iterator

SITE = "docs/site"

PAGE_OF = {"include/tidora/tidora.h": "api/c.md"}
"""Files that have a page of their own."""

GROUPS = {
    "faults": "What slips",
    "engine": "Displacement and sea surface",
    "ensemble": "Many scenarios",
    "formats": "Grids and series of them",
    "fields": "Grids and series of them",
    "errors": "Errors and warnings",
}
"""Rooms of the Python package, and the headings under which their names stand."""

HEADERS = {
    "config/ConfReader.h": "Configuration",
    "region/Region.h": "Regions",
    "fault/Fault.h": "Fault",
    "deform/FaultElement.h": "Element",
    "fault/DynamicParam.h": "Intervals of a rupture",
    "grid/InstantVal2d.h": "Snapshot",
    "grid/GridShape.h": "Place of a grid",
    "linear/Linear.h": "Raised band",
    "okada/DC3D.h": "Dislocation",
    "projection/mapproject.h": "Projection",
}

_LINK = re.compile(r"(!?)\[((?:[^\[\]]|\[[^\]]*\])*)\]\(([^)\s]+)\)")
_FENCE = re.compile(r"(^```.*?^```[^\n]*$)", re.DOTALL | re.MULTILINE)


def documents(tree: Path) -> Iterator[PurePosixPath]:
    """Every Markdown file outside of build folders, hidden ones and the pages of the site."""
    for folder, below, names in os.walk(tree):
        here = PurePosixPath(Path(folder).relative_to(tree).as_posix())
        below[:] = sorted(
            name for name in below if not name.startswith((".", "build")) and str(here / name) not in (SITE,)
        )
        yield from (here / name for name in sorted(names) if name.endswith(".md"))


class Site:
    """The sources of the site, as they grow."""

    def __init__(self, tree: Path, target: Path) -> None:
        self.tree, self.target = tree, target
        self.pages = list(documents(tree))

    def write(self, page: PurePosixPath, text: str) -> None:
        path = self.target / page
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def adopt(self, page: PurePosixPath, text: str) -> None:
        """Writes a document, its links as the site needs them."""
        parts = _FENCE.split(text)
        parts[::2] = [_LINK.sub(lambda link: self._linked(page, link), prose) for prose in parts[::2]]
        self.write(page, "".join(parts))

    def _linked(self, page: PurePosixPath, link: "re.Match[str]") -> str:
        mark, words, target = link.groups()
        path, _, fragment = target.partition("#")
        if ":" in path or not path:
            return link[0]
        place = PurePosixPath(os.path.normpath(page.parent / path))
        if (self.tree / place).is_dir():
            if place / "README.md" not in self.pages:
                return words if words.startswith("`") else f"`{words}`"
            place = place / "README.md"
        place = PurePosixPath(PAGE_OF.get(str(place), place))
        if place.suffix != ".md":
            self._take_along(place)
        leading = os.path.relpath(place, page.parent) + (f"#{fragment}" if fragment else "")
        return f"{mark}[{words}]({leading})"

    def _take_along(self, file: PurePosixPath) -> None:
        target = self.target / file
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(self.tree / file, target)


def public_names(tree: Path) -> dict[str, list[str]]:
    """Names of ``tidora.__all__`` by the heading of the room that they come from."""
    module = ast.parse((tree / "python/tidora/__init__.py").read_text(encoding="utf-8"))
    home: dict[str, str] = {}
    shown: list[str] = []
    for statement in module.body:
        if isinstance(statement, ast.ImportFrom) and statement.module:
            home.update({name.asname or name.name: statement.module.split(".")[0] for name in statement.names})
        elif isinstance(statement, ast.Assign) and getattr(statement.targets[0], "id", "") == "__all__":
            shown = ast.literal_eval(statement.value)
    groups: dict[str, list[str]] = {heading: [] for heading in GROUPS.values()}
    for name in shown:
        groups[GROUPS[home[name]]].append(name)
    return groups


def python_page(tree: Path) -> str:
    parts = ["# Python\n\nWhat `import tidora` gives.\n"]
    for heading, names in public_names(tree).items():
        rows = "\n".join(f"   tidora.{name}" for name in names)
        listing = f".. autosummary::\n   :toctree: python\n   :nosignatures:\n\n{rows}"
        parts.append(f"\n## {heading}\n\n```{{eval-rst}}\n{listing}\n```\n")
    return "".join(parts)


def cxx_page(xml: Path, beginning: str) -> str:
    """A heading for each header, and what it declares in its namespace or, where it has none, at all."""
    parts = [beginning]
    inside = ElementTree.parse(xml / "namespacetidora.xml").getroot()
    for header, heading in HEADERS.items():
        name = PurePosixPath(header).name
        parts.append(f'\n## {heading}\n\n`#include "{header}"`\n')
        declared = ElementTree.parse(xml / name.replace(".h", "_8h.xml")).getroot()
        if declared.find(".//innernamespace") is None:
            parts.append(f"\n```{{doxygenfile}} {name}\n```\n")
            continue
        for inner in declared.iter("innerclass"):
            kind = "class" if inner.attrib["refid"].startswith("class") else "struct"
            parts.append(f"\n```{{doxygen{kind}}} {inner.text}\n:members:\n:undoc-members:\n```\n")
        for member in inside.iter("memberdef"):
            place = member.find("location")
            if place is not None and place.attrib["file"].endswith(header):
                parts.append(f"\n```{{doxygen{member.attrib['kind']}}} {member.findtext('qualifiedname')}\n```\n")
    return "".join(parts)


def gallery(site: Site, beginning: str) -> str:
    """A heading, the picture and its first words for each example and story that has one."""
    parts = [beginning]
    for page in site.pages:
        if page.parts[0] != "examples" and page.parts[:2] != ("docs", "stories"):
            continue
        text = (site.tree / page).read_text(encoding="utf-8")
        picture = re.search(r"^!\[([^\]]*)\]\(([^)]+)\)", text, re.MULTILINE)
        heading = re.match(r"# (.*)\n", text)
        if picture and heading:
            path = os.path.normpath(page.parent / picture[2])
            parts.append(f"\n## {heading[1]}\n\n![{picture[1]}]({path})\n\n{picture[1]}: [{page}]({page}).\n")
    return "".join(parts)


def index(site: Site, text: str) -> str:
    """The page of contents: a line (FOLDER) becomes what no other line names of its documents."""
    named = set(re.findall(r"^[\w./-]+$", text, re.MULTILINE))

    def others(line: "re.Match[str]") -> str:
        folder = line[1]
        found = [str(page)[:-3] for page in site.pages if str(page).startswith(f"{folder}/")]
        if folder == "docs":
            found = [name for name in found if name.count("/") == 1]
        return "".join(f"{name}\n" for name in found if name not in named)

    return re.sub(r"^\(([\w/]+)\)\n", others, text, flags=re.MULTILINE)


def main() -> None:
    tree, xml, target = Path(sys.argv[1]).resolve(), Path(sys.argv[2]), Path(sys.argv[3])
    shutil.rmtree(target, ignore_errors=True)
    site = Site(tree, target)
    for page in site.pages:
        site.adopt(page, (tree / page).read_text(encoding="utf-8"))
    own = {name: (tree / SITE / name).read_text(encoding="utf-8") for name in ("index.md", "gallery.md", "api/c.md")}
    site.adopt(PurePosixPath("index.md"), index(site, own["index.md"]))
    site.adopt(PurePosixPath("gallery.md"), gallery(site, own["gallery.md"]))
    site.adopt(PurePosixPath("api/c.md"), own["api/c.md"])
    beginning = (tree / SITE / "api/cxx.md").read_text(encoding="utf-8")
    site.adopt(PurePosixPath("api/cxx.md"), cxx_page(xml, beginning))
    site.write(PurePosixPath("api/python.md"), python_page(tree))


if __name__ == "__main__":
    main()
