"""``FFM.geojson`` of NEIC: the outline of every subfault."""

from __future__ import annotations

import json
import re
from typing import Any, Optional

import numpy as np
import pyproj
import xarray as xr

from ..errors import FileError, Parameter, TidoraError
from .assembling import Model, assembled
from .layout import planes_of_runs
from .model_text import OTHER_ENCODINGS, Reading, decoded
from .table import TOP_START

_ELLIPSOID = pyproj.Geod(ellps="GRS80")
_NEEDED = ("slip", "rake")
_OTHERS = ("trup", "rise", "sf_moment")
_ORDER = "corners are top start, top end, bottom end and bottom start"


def is_model(head: str) -> bool:
    """True for JSON."""
    return head.lstrip()[:1] == "{"


def read(reading: Reading, reference: Optional[str]) -> xr.Dataset:
    """The table of a model."""
    if reference not in (None, TOP_START):
        raise TidoraError((Parameter("reference"), f" is {TOP_START} in outlines, which have all corners"))
    document, lines = _loaded(reading)
    features = document["features"]
    corners = np.empty((len(features), 4, 3))
    values = {name: np.zeros(len(features)) for name in (*_NEEDED, *_OTHERS)}
    present = {name: True for name in _OTHERS}
    for at, feature in enumerate(features):
        corners[at] = _corners(reading, feature, lines[at])
        properties = feature.get("properties")
        properties = properties if isinstance(properties, dict) else {}
        for name, column in values.items():
            if name in properties:
                column[at] = _number(reading, properties[name], name, lines[at])
            elif name in _NEEDED:
                reading.fail(f"a subfault has a {name}", lines[at])
            else:
                present[name] = False
    columns = _geometry(reading, corners, np.array(lines))
    for name, target, word in (("trup", "lag_time", "onset"), ("rise", "duration", "rise time")):
        columns[target] = values[name]
        if not present[name]:
            reading.assume(f"some subfaults have no {word} ({name}): 0 s are taken")
    columns["slip"], columns["rake"] = values["slip"], values["rake"]
    model = Model("NEIC FFM.geojson", columns, np.array(lines), TOP_START, attrs=_stated(document))
    model.moments = values["sf_moment"] if present["sf_moment"] else None
    model.layout = planes_of_runs(columns["depth"])
    return assembled(reading, model)


def _loaded(reading: Reading) -> tuple[dict[str, Any], list[int]]:
    """The document, and the line of each of its features."""
    try:
        with open(reading.path, "rb") as file:
            raw = file.read()
        if raw[:2] in OTHER_ENCODINGS:
            reading.fail(f"is {OTHER_ENCODINGS[raw[:2]]}; a model is plain text or UTF-8", 1)
        text = decoded(raw)
        document = json.loads(text)
    except OSError as error:
        raise FileError(reading.path, f"cannot be read: {error.strerror}") from None
    except json.JSONDecodeError as error:
        reading.fail(f"is no JSON: {error.msg}", error.lineno)
    except (RecursionError, ValueError) as error:
        reading.fail(f"is no JSON that can be read: {str(error)[:80]}")
    features = document.get("features")
    if not isinstance(features, list) or not all(isinstance(feature, dict) for feature in features):
        reading.fail("is JSON, but no collection of features with the outlines of subfaults", 1)
    return document, _feature_lines(text, len(features))


def _feature_lines(text: str, count: int) -> list[int]:
    """Line of each feature; 1 for all where they are not found."""
    found = re.search(r'"features"\s*:\s*\[\s*', text)
    decoder, lines, line, before = json.JSONDecoder(), [], 1, 0
    at = found.end() if found else 0
    for _ in range(count):
        line, before = line + text.count("\n", before, at), at
        lines.append(line)
        try:
            _, at = decoder.raw_decode(text, at)
        except (json.JSONDecodeError, RecursionError):
            return [1] * count
        while at < len(text) and text[at] in " \t\r\n,":
            at += 1
    return lines


def _number(reading: Reading, value: Any, name: str, line: int) -> float:
    if isinstance(value, bool) or not isinstance(value, (int, float)) or not abs(value) < 1e300:
        reading.fail(f"{name} is a finite number, not {str(value)[:40]!r}", line)
    return float(value)


def _corners(reading: Reading, feature: dict[str, Any], line: int) -> np.ndarray:
    """(4, 3): longitude, latitude and depth in m of the corners."""
    geometry = feature.get("geometry")
    if not isinstance(geometry, dict) or geometry.get("type") != "Polygon":
        reading.fail("a subfault is a polygon", line)
    rings = geometry.get("coordinates")
    ring = rings[0] if isinstance(rings, list) and len(rings) == 1 else None
    if not isinstance(ring, list) or len(ring) not in (4, 5) or (len(ring) == 5 and ring[0] != ring[4]):
        reading.fail("the outline of a subfault is one ring of four corners, closed or not", line)
    for corner in ring:
        if not isinstance(corner, list) or len(corner) != 3:
            reading.fail("a corner has longitude, latitude and depth", line)
    return np.array([[_number(reading, value, "a corner", line) for value in corner] for corner in ring[:4]])


def _geometry(reading: Reading, corners: np.ndarray, lines: np.ndarray) -> dict[str, np.ndarray]:
    """Place and size of rectangles: strike and dip follow from the corners."""
    lon, lat, depth = np.moveaxis(corners, 2, 0).reshape(3, -1, 4)
    wrong = np.flatnonzero(np.any(np.abs(lat) > 90, axis=1) | np.any(np.abs(lon) > 720, axis=1))
    if wrong.size:
        reading.fail("a corner has longitude before latitude, in degrees", int(lines[wrong[0]]))
    upper, height = depth[:, :2].mean(axis=1), depth[:, 2:].mean(axis=1) - depth[:, :2].mean(axis=1)
    azimuth, _, length = _ELLIPSOID.inv(lon[:, 0], lat[:, 0], lon[:, 1], lat[:, 1])
    lower, _, other = _ELLIPSOID.inv(lon[:, 3], lat[:, 3], lon[:, 2], lat[:, 2])
    strike = azimuth + 0.5 * (np.remainder(lower - azimuth + 180.0, 360.0) - 180.0)
    down, _, way = _ELLIPSOID.inv(lon[:, 0], lat[:, 0], lon[:, 3], lat[:, 3])
    across = way * np.sin(np.radians(down - strike))
    uneven = np.abs(depth[:, 0] - depth[:, 1]) + np.abs(depth[:, 3] - depth[:, 2]) > 0.1 * np.abs(height) + 20.0
    skewed = (np.abs(length - other) > 0.1 * length + 30.0) | (height < 0) | (across < -30.0) | uneven
    wrong = np.flatnonzero(skewed | (length <= 0))
    if wrong.size:
        reading.fail(f"{_ORDER} of a rectangle that dips to the right of strike", int(lines[wrong[0]]))
    across = np.maximum(across, 0.0)
    return {
        "x": lon[:, 0], "y": lat[:, 0], "depth": upper, "strike": np.remainder(strike, 360.0),
        "dip": np.degrees(np.arctan2(height, across)), "length": 0.5 * (length + other),
        "width": np.hypot(height, across),
    }  # fmt: skip


def _stated(document: dict[str, Any]) -> dict[str, object]:
    metadata = document.get("metadata")
    epicentre = metadata.get("epicenter") if isinstance(metadata, dict) else None
    if not isinstance(epicentre, dict):
        return {}
    names = {"stated_magnitude": "mag", "stated_moment": "moment"}
    found = {name: epicentre.get(key) for name, key in names.items()}
    return {name: float(value) for name, value in found.items() if isinstance(value, (int, float)) and value > 0}
