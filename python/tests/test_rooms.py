"""The rooms of the package: what is loaded when it is used, and who speaks of options."""

import ast
import inspect
import os
import re
import subprocess
import sys

import pytest
from conftest import ROOT

import tidora
from tidora.commands.options import OPTIONS
from tidora.formats.registry import FORMATS

PACKAGE = ROOT / "python" / "tidora"
FILES = sorted(PACKAGE.rglob("*.py"))


def name_of(path):
    parts = ("tidora", *path.relative_to(PACKAGE).with_suffix("").parts)
    return ".".join(parts[:-1] if parts[-1] == "__init__" else parts)


MODULES = {name_of(path): path for path in FILES}


def imports(module):
    """Modules of the package that a module imports anywhere, in functions too, with the names that it takes."""
    path = MODULES[module]
    package = module.split(".") if path.name == "__init__.py" else module.split(".")[:-1]
    found = []
    for node in ast.walk(ast.parse(path.read_text())):
        if isinstance(node, ast.Import):
            found += [(alias.name, None) for alias in node.names if alias.name.split(".")[0] == "tidora"]
        elif isinstance(node, ast.ImportFrom):
            stem = package[: len(package) - node.level + 1] if node.level else []
            source = ".".join([*stem, *([node.module] if node.module else [])])
            if source.split(".")[0] == "tidora":
                for alias in node.names:
                    inner = f"{source}.{alias.name}"
                    found.append((inner, None) if inner in MODULES else (source, alias.name))
    return found


def test_the_modules_that_the_registry_loads_are_there_and_do_not_lead_back_to_it():
    # By their names, when they are used: scripts/include-graph, which checks every other arrow, does not see these.
    for form in FORMATS:
        loaded = f"tidora{form.module[1:]}" if form.module.startswith("..") else f"tidora.formats{form.module}"
        seen, left = set(), [loaded]
        while left:
            module = left.pop()
            assert module in MODULES, f"{module} is not there"
            seen.add(module)
            left += [target for target, _ in imports(module) if target not in seen]
        assert "tidora.formats.registry" not in seen, f"{loaded} leads back to the registry"


LIBRARY = [path for path in FILES if "commands" not in path.relative_to(PACKAGE).parts]


@pytest.mark.parametrize("path", LIBRARY, ids=lambda path: str(path.relative_to(PACKAGE)))
def test_the_library_names_no_option_and_prints_nothing(path):
    text = path.read_text()
    assert not re.search(r"--[a-z]", text)
    called = {node.func.id for node in ast.walk(ast.parse(text)) if isinstance(node, ast.Call)
              and isinstance(node.func, ast.Name)}  # fmt: skip
    assert "print" not in called and not re.search(r"sys\.std(out|err)", text)


# Their names of parameters are computed: from a loop over names, or from what a caller says.
COMPUTED = {
    "arguments.py", "binding.py", "conversion.py", "deform.py", "kajiura.py", "making.py", "nodes.py",
    "slip_rows.py", "stochastic.py", "table.py", "where.py",
}  # fmt: skip


def test_every_parameter_of_a_message_has_its_option_or_is_one_of_python_and_every_such_option_exists():
    named = set()
    for path in LIBRARY:
        for node in ast.walk(ast.parse(path.read_text())):
            if isinstance(node, ast.Call) and getattr(node.func, "id", "") == "Parameter":
                if isinstance(node.args[0], ast.Constant):
                    named.add(node.args[0].value)
                else:
                    assert path.name in COMPUTED
    named |= {name for form in FORMATS for name in form.takes}
    functions = [getattr(tidora, name) for name in tidora.__all__ if inspect.isfunction(getattr(tidora, name))]
    public = {name for function in functions for name in inspect.signature(function).parameters}
    assert named - set(OPTIONS) <= public and set(OPTIONS) - named <= public
    words = set()
    for path in (PACKAGE / "commands").glob("*.py"):
        for node in ast.walk(ast.parse(path.read_text())):
            if isinstance(node, ast.Call) and getattr(node.func, "attr", "") == "add_argument":
                words |= {word.value for word in node.args if isinstance(word, ast.Constant)}
                words |= {key.value.value for key in node.keywords if key.arg == "metavar"}
    assert set(OPTIONS.values()) <= words


def test_importing_the_package_loads_no_library_and_needs_none():
    script = (
        "import tidora; from tidora.engine import binding; assert not binding._loaded; print(tidora.deform.__name__)"
    )
    environment = {**os.environ, "TIDORA_LIBRARY": "/no/such/library.so", "PYTHONPATH": str(ROOT / "python")}
    done = subprocess.run([sys.executable, "-c", script], env=environment, capture_output=True, text=True)
    assert (done.stdout, done.stderr) == ("deform\n", "")


def test_the_packages_of_an_installation_are_those_of_the_folders():
    listed = re.search(r"^packages = \[(.*)\]", (ROOT / "pyproject.toml").read_text(), re.MULTILINE).group(1)
    folders = {name_of(path) for path in FILES if path.name == "__init__.py"}
    assert set(re.findall(r'"([\w.]+)"', listed)) == folders
