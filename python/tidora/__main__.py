"""``python -m tidora`` is ``tdr``."""

from .commands.main import command

command()
