"""``python -m tidora`` is ``tdr``."""

from .cli import command

command()
