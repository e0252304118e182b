"""Published models for the tests: where they are, and small ones of every format, made by the rules of the formats."""

import json
import warnings
from pathlib import Path

import numpy as np
import pyproj

import tidora

FILES = Path(__file__).resolve().parent / "data"
EXAMPLES = Path(__file__).resolve().parents[2] / "examples" / "tohoku2011" / "data"
ELLIPSOID = pyproj.Geod(ellps="GRS80")


def path_of(name):
    """The path of a published file: beside the tests, or among the examples."""
    return FILES / name if (FILES / name).exists() else EXAMPLES / name


def read(path, **options):
    """A model with what was said of it: (table, texts of the warnings)."""
    with warnings.catch_warnings(record=True) as said:
        warnings.simplefilter("always")
        table = tidora.read_faults(path_of(path) if isinstance(path, str) else path, **options)
    assert all(issubclass(warning.category, tidora.TidoraWarning) for warning in said)
    return table, [str(warning.message) for warning in said]


def point_of(table, along, down):
    """Longitude, latitude and depth of a point of every rectangle, laid out from its start with geodesics.

    Independent of the package: `along` and `down` are parts of length and width.
    """
    strike, dip = np.radians(table["strike"].values), np.radians(table["dip"].values)
    by_strike, across = along * table["length"].values, down * table["width"].values * np.cos(dip)
    east = by_strike * np.sin(strike) + across * np.cos(strike)
    north = by_strike * np.cos(strike) - across * np.sin(strike)
    lon, lat, _ = ELLIPSOID.fwd(
        table["x"].values, table["y"].values, np.degrees(np.arctan2(east, north)), np.hypot(east, north)
    )
    return np.asarray(lon), np.asarray(lat), table["depth"].values + down * table["width"].values * np.sin(dip)


def apart(one, other):
    """Metres between points (lon, lat, depth)."""
    return np.hypot(ELLIPSOID.inv(one[0], one[1], other[0], other[1])[2], np.asarray(one[2]) - np.asarray(other[2]))


FSP_HEAD = """% ------ FINITE-SOURCE RUPTURE MODEL ------
% Event : Nowhere
% Size : LEN = 20 km  WID = 10 km  Mw = 6.0  Mo = 1.2589e+18 Nm
% Mech : STRK = 10  DIP = 30  RAKE = 90  Htop = 5.00 km
% Invs : Nx = 2  Nz = 1  Fmin = 0.002 Hz  Fmax = 1 Hz
% Invs : Dx = 10 km  Dz = 10 km
% Invs : Ntw = 1  Nsg = 1
% SOURCE MODEL PARAMETERS
% Coordinates are given for center of each subfault or segment: |'|
% Nsbfs = 2 subfaults
% LAT LON X==EW Y==NS Z SLIP RAKE TRUP RISE SF_MOMENT
"""
FSP_ROWS = ["38.0 143.0 0 0 7.5 0.2 90 0 4 6.2946e17", "38.1 143.02 0 0 7.5 0.2 90 3 4 6.2946e17"]

PARAM_HEAD = """#Total number of fault_segments=     1
#Fault_segment =   1 nx(Along-strike)=   2 Dx= 10.00km ny(downdip)=   1 Dy= 10.00km
#Boundary of Fault_segment     1. EQ in cell 1,1. Lon: 143.0   Lat: 38.0
#Lon.  Lat.  Depth
143.0 38.0 5.0
#Lat. Lon. depth slip rake strike dip t_rup t_ris t_fal mo
"""
PARAM_ROWS = ["38.0 143.0 7.5 20 90 10 30 0 2 2 6.0e+24", "38.1 143.02 7.5 20 90 10 30 3 2 2 6.0e+24"]

CSV_HEAD = "longitude,latitude,depth (km),strike,dip,rake,slip (m),length (km),width (km)\n"
CSV_ROWS = ["143.0,38.0,5,10,30,90,0.2,10,10", "143.02,38.1,5,10,30,90,0.2,10,10"]

NOAA_HEAD = (
    "# Propagation database metadata file\n# Name, Filename/URL, Long(deg), Lat(deg), Slip(m), Strike(deg), Dip(deg), "
    "Depth(km), Length(km), Width(km), Rake(deg)\n"
)
NOAA_ROWS = [
    "kisza1, u, 143.0, 38.0, 1.0, 10.0, 30.0, 5.0, 100.0, 50.0, 90.0",
    "kiszb1, u, 143.5, 38.0, 1.0, 10.0, 30.0, 5.0, 100.0, 50.0, 90.0",
]

RUPT_HEAD = "# No lon lat z(km) strike dip type rise ss(m) ds(m) L(m) W(m) onset mu\n"
RUPT_ROWS = [
    "1 143.0 38.0 7.5 10 30 0.5 4 0.3 0.4 1e4 1e4 0 3e10",
    "2 143.02 38.1 7.5 10 30 0.5 4 0.3 0.4 1e4 1e4 3 3e10",
]

_FEATURE = {
    "type": "Feature",
    "geometry": {
        "type": "Polygon",
        "coordinates": [
            [[143.0, 38.0, 5e3], [143.0, 38.1, 5e3], [143.1, 38.1, 1e4], [143.1, 38.0, 1e4], [143.0, 38.0, 5e3]]
        ],
    },
    "properties": {"slip": 0.2, "rake": 90.0, "trup": 0.0, "rise": 4.0, "sf_moment": 6e17},
}


def geojson(**changes):
    """A collection of two subfaults; changes of the properties of the second."""
    other = json.loads(json.dumps(_FEATURE))
    for name, value in changes.items():
        if value is None:
            del other["properties"][name]
        else:
            other["properties"][name] = value
    return json.dumps({"type": "FeatureCollection", "features": [_FEATURE, other]}, indent=1) + "\n"


SMALL = {
    "fsp": FSP_HEAD + "\n".join(FSP_ROWS) + "\n",
    "param": PARAM_HEAD + "\n".join(PARAM_ROWS) + "\n",
    "csv": CSV_HEAD + "\n".join(CSV_ROWS) + "\n",
    "noaa": NOAA_HEAD + "\n".join(NOAA_ROWS) + "\n",
    "rupt": RUPT_HEAD + "\n".join(RUPT_ROWS) + "\n",
    "geojson": geojson(),
}
"""Text of a small model of each format."""
