"""GeoTIFF.

A node is the centre of its pixel: a pixel is the cell of one spacing around the node ("pixel is area"), and the corner
of the picture lies half a spacing outside of the outermost nodes. The first row of a GeoTIFF is the northern one.
"""

from __future__ import annotations

import os
import zlib
from typing import Any, Optional

import numpy as np
import pyproj
import rasterio
import xarray as xr
from rasterio.errors import RasterioError, RasterioIOError
from rasterio.transform import Affine
from rasterio.windows import Window

from ..errors import FileError, Parameter, Path, TidoraError
from ..fields.kinds import GEOGRAPHIC, PLANE, axis_attributes, guess_kind
from ..fields.lazy import Key, lazily, span
from ..fields.making import as_field
from ..fields.making import make_field
from ..fields.reference import crs_of, kind_of_crs
from ..fields.shape import GridShape, row_blocks, shape_of
from ..files import replacing
from .contract import Step, Writing, no_progress, row_steps

_ORIGIN = "TIDORA_ORIGIN"
_SPACING = "TIDORA_SPACING"

steps = row_steps


def write(field: xr.DataArray, path: Path, options: Writing = Writing(), progress: Step = no_progress) -> GridShape:
    """Writes a field as GeoTIFF with its reference system, one block of rows at a time.

    Parameters
    ----------
    field : xarray.DataArray, (y, x)
        A plane field needs a reference system.
    path : path
        Appears when it is complete.
    options : Writing
        Of no use here.
    progress : callable
        Is told of each block.

    Raises
    ------
    TidoraError
        If a plane field has no reference system.
    """
    shape = shape_of(field)
    crs = crs_of(field)
    if crs is None:
        raise TidoraError(
            ("a GeoTIFF needs the reference system of the plane: ", Parameter("crs", "EPSG:32654"), ", say")
        )
    half = shape.dx / 2
    transform = Affine(shape.dx, 0, shape.org_x - half, 0, -shape.dx, float(shape.y[-1]) + half)
    profile = {
        "driver": "GTiff",
        "width": shape.nx,
        "height": shape.ny,
        "count": 1,
        "dtype": "float32",
        "crs": rasterio.crs.CRS.from_wkt(crs.to_wkt("WKT1_GDAL")),
        "transform": transform,
        "nodata": np.nan,
        "compress": "deflate",
        "predictor": 3,
        "BIGTIFF": "IF_SAFER",
    }
    with replacing(path) as part:
        try:
            with rasterio.Env(GDAL_CACHEMAX=16), rasterio.open(part, "w", **profile) as file:
                file.update_tags(
                    AREA_OR_POINT="Area",
                    TIFFTAG_IMAGEDESCRIPTION=str(field.attrs.get("long_name", "")),
                    # The corner is half a spacing away: adding it again may cost the last bit.
                    **{_ORIGIN: f"{shape.org_x!r} {shape.org_y!r}", _SPACING: repr(shape.dx)},
                )
                file.set_band_unit(1, "m")
                sums = []
                for rows in row_blocks(shape):
                    block = np.ascontiguousarray(field.isel(y=rows).values[::-1], dtype=np.float32)
                    file.write(block, 1, window=_window(shape, rows))
                    sums.append(zlib.crc32(block.tobytes()))
                    progress("")
            # What fails while the file is closed, on a full disk say, is not told: only reading it back shows it.
            with rasterio.Env(GDAL_CACHEMAX=16), rasterio.open(part) as file:
                for rows, expected in zip(row_blocks(shape), sums):
                    if zlib.crc32(file.read(1, window=_window(shape, rows)).tobytes()) != expected:
                        raise FileError(path, "cannot be written: it does not hold what was written (a full disk?)")
        except (RasterioError, RasterioIOError) as error:
            raise FileError(path, f"cannot be written: {error}") from None
    return shape


def _window(shape: GridShape, rows: slice) -> Window:
    """Where rows, counted from the south, stand in a picture that begins in the north."""
    return Window(0, shape.ny - rows.stop, shape.nx, rows.stop - rows.start)


def open(path: Path, coord: Optional[str] = None, variable: Optional[str] = None) -> xr.DataArray:
    """Opens the first band of a GeoTIFF; read when it is used.

    Parameters
    ----------
    path : path
    coord : {'plane', 'geographic'}, optional
        If the file has no reference system.
    variable : str, optional
        Of no use: the first band counts.

    Returns
    -------
    xarray.DataArray, (y, x), float32
        Nodes at the centres of the pixels, rows from the south; NaN where the file has no data.

    Raises
    ------
    FileError
        If it is no raster, or a rotated one.
    """
    try:
        with rasterio.open(path) as file:
            transform, crs, size, tags = file.transform, file.crs, (file.height, file.width), file.tags()
            unit_scale = (file.scales[0], file.offsets[0])
    except (RasterioError, RasterioIOError) as error:
        raise FileError(path, f"is no raster that can be read: {error}") from None
    if transform.b != 0 or transform.d != 0 or transform.a <= 0 or transform.e >= 0:
        raise FileError(path, "the raster is rotated or upside down, or has no georeference")
    height, width = size
    system = None if crs is None else pyproj.CRS.from_wkt(crs.to_wkt())
    x = transform.c + transform.a * (np.arange(width) + 0.5)
    y = transform.f + transform.e * (np.arange(height)[::-1] + 0.5)

    def read(key: Key) -> np.ndarray:
        r0, r1, rows = span(key[0], height)
        c0, c1, columns = span(key[1], width)
        if r0 == r1 or c0 == c1:
            return np.empty((r1 - r0, c1 - c0), np.float32)[rows, columns]
        try:
            with rasterio.Env(GDAL_CACHEMAX=16), rasterio.open(path) as source:
                window = Window(c0, height - r1, c1 - c0, r1 - r0)
                block = source.read(1, window=window, masked=True)
        except (RasterioError, RasterioIOError) as error:
            raise FileError(path, f"cannot be read: {error}") from None
        values = np.ma.filled(block.astype(np.float32), np.nan)
        if unit_scale != (1.0, 0.0):
            values = (values * unit_scale[0] + unit_scale[1]).astype(np.float32)
        return values[::-1][rows, columns]

    attrs: dict[str, Any] = {
        "units": "m",
        "source_file": os.path.basename(os.fspath(path)),
        "long_name": tags.get("TIFFTAG_IMAGEDESCRIPTION") or "band 1",
    }
    if system is not None:
        attrs["crs_wkt"] = system.to_wkt()
    own = _own_shape(tags, x, y)
    if system is not None:
        kind = kind_of_crs(system)
    else:
        kind = coord or guess_kind(GridShape(float(x[0]), float(y[0]), width, height, transform.a), os.fspath(path))
    data = lazily((height, width), read)
    if own is not None:
        return make_field(data, own, kind, attrs)
    assert kind in (PLANE, GEOGRAPHIC)
    coords = {"y": ("y", y, axis_attributes(kind, "y")), "x": ("x", x, axis_attributes(kind, "x"))}
    return as_field(("y", "x"), data, attrs, coords)


def _own_shape(tags: dict[str, str], x: np.ndarray, y: np.ndarray) -> Optional[GridShape]:
    """Shape that `write` noted, if the georeference still agrees with it."""
    try:
        org_x, org_y = (float(word) for word in tags[_ORIGIN].split())
        shape = GridShape(org_x, org_y, x.size, y.size, float(tags[_SPACING]))
    except (KeyError, ValueError):
        return None
    near = 1e-4 * shape.dx
    agrees = (
        abs(shape.org_x - x[0]) < near
        and abs(shape.org_y - y[0]) < near
        and np.allclose(shape.x, x, rtol=0, atol=near)
        and np.allclose(shape.y, y, rtol=0, atol=near)
    )
    return shape if agrees else None
