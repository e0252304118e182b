"""CF NetCDF: a whole series with its times, or one grid."""

from .netcdf_reading import open
from .netcdf_writing import steps, write, write_several

__all__ = ["open", "steps", "write", "write_several"]
