"""The version, that of the program: from the file VERSION of the source folder, or as the package was installed."""

from importlib import metadata
from pathlib import Path


def _version() -> str:
    top = Path(__file__).resolve().parents[2]
    # Elsewhere a file of this name may be anybody's.
    if (top / "VERSION").is_file() and (top / "python" / "tidora").is_dir():
        return (top / "VERSION").read_text(encoding="utf-8").strip()
    return metadata.version("tidora")


VERSION = _version()
