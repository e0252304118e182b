"""Makes the initial sea surface of a tsunami; reads, measures, draws and converts what Tidora reads and writes.

>>> import tidora
>>> series = tidora.open_series("out/Tdr_japan.txt", coord="geographic")    # doctest: +SKIP
>>> float(series.sum("time").max())                                         # doctest: +SKIP
"""

from .engine.binding import library_path
from .engine.deform import deform
from .engine.kajiura import kajiura
from .engine.source import source
from .engine.where import grid, points
from .ensemble.combining import combine
from .ensemble.run import ensemble
from .ensemble.scenarios import scenario
from .ensemble.units import unit_sources
from .errors import FileError, TidoraError, TidoraWarning
from .faults.making import make_faults
from .faults.models import read_faults
from .faults.moment import seismic_moment
from .faults.outlines import outlines
from .faults.scaling import scaling
from .faults.slip_table import make_slip_table, read_slip_table, write_slip_table
from .faults.stochastic import stochastic_slip
from .faults.table import write_faults
from .fields.series import snapshot, total
from .formats.grid import open_grid, write_grid
from .formats.series_list import open_series
from .version import VERSION

__all__ = [
    "FileError",
    "TidoraError",
    "TidoraWarning",
    "combine",
    "deform",
    "ensemble",
    "grid",
    "kajiura",
    "library_path",
    "make_faults",
    "make_slip_table",
    "open_grid",
    "open_series",
    "outlines",
    "points",
    "read_faults",
    "read_slip_table",
    "scaling",
    "scenario",
    "seismic_moment",
    "snapshot",
    "source",
    "stochastic_slip",
    "total",
    "unit_sources",
    "write_faults",
    "write_grid",
    "write_slip_table",
]
__version__ = VERSION
