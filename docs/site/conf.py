"""How Sphinx makes the site; scripts/build-site prepares its sources and calls it."""

import os
import sys
from pathlib import Path

TREE = Path(os.environ["TIDORA_TREE"])
sys.path.insert(0, str(TREE / "python"))

project = "Tidora"
version = release = (TREE / "VERSION").read_text(encoding="ascii").strip()
extensions = ["myst_parser", "sphinx.ext.autodoc", "sphinx.ext.autosummary", "numpydoc", "breathe"]
source_suffix = {".rst": "restructuredtext", ".md": "markdown"}

# Blocks in comments of the headers are words, not Python.
highlight_language = "none"

# Headings of as many levels can be linked, by the names that they have wherever Markdown is shown.
myst_heading_anchors = 4

# A name in single quotes is a link where it leads to something, else a name.
default_role = "autolink"
autosummary_generate = True
autosummary_generate_overwrite = True
autodoc_typehints = "none"
numpydoc_show_class_members = False
# A public function without a docstring, a summary, a parameter of its own or of nobody, or what it returns.
numpydoc_validation_checks = {"GL08", "SS01", "PR01", "PR02", "PR04", "PR07", "RT01", "RT03"}

breathe_projects = {"tidora": os.environ["TIDORA_XML"]}
breathe_default_project = "tidora"
breathe_domain_by_file_pattern = {"*/tidora.h": "c"}
breathe_show_define_initializer = False

html_theme = "furo"
html_title = f"Tidora {release}"
html_show_sphinx = False
html_show_copyright = False
html_copy_source = False
html_static_path = ["static"]
html_css_files = ["site.css"]
