"""The globe frame against geodesics: distance and direction of PROJ's geodesics, fed into the plane frame."""

import numpy as np
import pyproj
import pytest

import tidora

ELLIPSOID = pyproj.Geod(ellps="GRS80")
BOUND = 2e-5
"""Of the largest displacement."""


def places(longitude, latitude, turn):
    """Places around a point, out to 500 km, with their true distance and directions at both ends."""
    distance, azimuth = np.meshgrid(
        np.concatenate([np.linspace(0, 120e3, 49), np.linspace(130e3, 500e3, 38)]), np.arange(0, 360, 7.5)
    )
    start = np.broadcast_to(longitude, distance.shape), np.broadcast_to(latitude, distance.shape)
    lon, lat, back = ELLIPSOID.fwd(*start, azimuth, distance)
    return distance, azimuth, np.asarray(lon) + turn, np.asarray(lat), np.asarray(back) + 180.0


def differences(longitude, latitude, strike, turn):
    """Differences of the three components in parts of the largest."""
    numbers = dict(depth=8e3, strike=strike, dip=25, rake=[60], length=8e4, width=4e4, slip=3)
    distance, azimuth, lon, lat, onward = places(longitude, latitude, turn)
    globe = tidora.deform(tidora.make_faults(longitude, latitude, **numbers), tidora.points(lon, lat), components="zen")
    east, north = distance * np.sin(np.radians(azimuth)), distance * np.cos(np.radians(azimuth))
    plane = tidora.deform(
        tidora.make_faults(0, 0, **numbers, coord="plane"), tidora.points(east, north, coord="plane"), components="zen"
    )
    # East and north at the point: the direction of the geodesic has turned by as much as they have.
    turned = np.radians(onward - azimuth).ravel()
    ue, un = plane["ue"].values, plane["un"].values
    expected = {
        "uz": plane["uz"].values,
        "ue": ue * np.cos(turned) + un * np.sin(turned),
        "un": un * np.cos(turned) - ue * np.sin(turned),
    }
    largest = max(float(np.abs(values).max()) for values in expected.values())
    return {name: float(np.abs(globe[name].values - values).max()) / largest for name, values in expected.items()}


@pytest.mark.parametrize("latitude", [0, 38, -38, 60, -60, 80, -80, 89.5, -89.5])
def test_the_globe_frame_is_that_of_geodesics_within_2e_5_out_to_500_km(latitude):
    worst = {"uz": 0.0, "ue": 0.0, "un": 0.0}
    for longitude, turn in ((140.0, 0), (179.9, 0), (179.9, 360), (-179.9, 360), (-179.9, -360)):
        for strike in (0, 37, 200):
            found = differences(longitude, latitude, strike, turn)
            worst = {name: max(worst[name], found[name]) for name in worst}
    print(f"latitude {latitude:g}: off by up to", {name: f"{value:.1e}" for name, value in worst.items()})
    assert max(worst.values()) <= BOUND
