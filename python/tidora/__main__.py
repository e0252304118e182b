"""``python -m tidora`` is ``tdr``."""

import sys

from .cli import main

sys.exit(main())
