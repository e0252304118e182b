"""The C interface as ctypes sees it: structures and numbers of tidora/tidora.h, by their names there."""

from __future__ import annotations

import ctypes

import numpy as np

OK, INVALID, NO_MEMORY, CANCELLED, FAILED = range(5)
"""Status."""

GRID, POINTS = 1, 2
"""Layouts."""

FRAMES = {"plane": 1, "globe": 2, "utm": 3}
DEPTHS = {"datum": 1, "floor": 2, "program": 3}
KERNELS = {"converged": 1, "program": 2}
COORDINATES = {"plane": 1, "geographic": 2}
SHARE_INTERVALS, SHARE_WINDOWS = 1, 2

Progress = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_double, ctypes.c_void_p)


_SIZE = ("size", ctypes.c_size_t)


class _Sized(ctypes.Structure):
    """A structure that begins with its size."""

    def __init__(self, **fields: object) -> None:
        super().__init__(size=ctypes.sizeof(type(self)), **fields)


class Error(_Sized):
    """tidora_error"""

    _fields_ = [_SIZE, ("argument", ctypes.c_char * 64), ("message", ctypes.c_char * 448)]


class Nodes(_Sized):
    """tidora_nodes"""

    _fields_ = [
        _SIZE,
        ("layout", ctypes.c_int32),
        ("reserved", ctypes.c_int32),
        ("nx", ctypes.c_size_t),
        ("ny", ctypes.c_size_t),
        ("x", ctypes.c_void_p),
        ("y", ctypes.c_void_p),
        ("topography", ctypes.c_void_p),
    ]


class DeformOptions(_Sized):
    """tidora_deform_options"""

    _fields_ = [
        _SIZE,
        ("frame", ctypes.c_int32),
        ("depth", ctypes.c_int32),
        ("tolerance", ctypes.c_double),
        ("tolerance_elements", ctypes.c_size_t),
        ("min_depth", ctypes.c_double),
        ("spacing", ctypes.c_double),
        ("threads", ctypes.c_int32),
        ("reserved", ctypes.c_int32),
        ("progress", Progress),
        ("user", ctypes.c_void_p),
    ]


class Layers(_Sized):
    """tidora_layers"""

    _fields_ = [_SIZE, ("count", ctypes.c_size_t), ("shares", ctypes.c_void_p)]


class Displacement(_Sized):
    """tidora_displacement"""

    _fields_ = [_SIZE] + [(name, ctypes.c_void_p) for name in ("uz", "ue", "un", "slope")]


class FieldGrid(_Sized):
    """tidora_field_grid"""

    _fields_ = [
        _SIZE,
        ("nx", ctypes.c_size_t),
        ("ny", ctypes.c_size_t),
        ("west", ctypes.c_double),
        ("south", ctypes.c_double),
        ("spacing", ctypes.c_double),
    ]


class FilterOptions(_Sized):
    """tidora_filter_options"""

    _fields_ = [
        _SIZE,
        ("coordinates", ctypes.c_int32),
        ("kernel", ctypes.c_int32),
        ("threads", ctypes.c_int32),
        ("reserved", ctypes.c_int32),
        ("parent", ctypes.POINTER(FieldGrid)),
        ("parent_uplift", ctypes.c_void_p),
        ("progress", Progress),
        ("user", ctypes.c_void_p),
    ]


FUNCTIONS = {
    # name: result, arguments
    "tidora_version": (ctypes.c_char_p, []),
    "tidora_status_text": (ctypes.c_char_p, [ctypes.c_int]),
    "tidora_deform": (
        ctypes.c_int,
        [
            ctypes.c_void_p,
            ctypes.c_size_t,
            ctypes.POINTER(Nodes),
            ctypes.POINTER(Layers),
            ctypes.POINTER(DeformOptions),
            ctypes.POINTER(Displacement),
            ctypes.POINTER(Error),
        ],
    ),
    "tidora_shares": (
        ctypes.c_int,
        [
            ctypes.c_int32,
            ctypes.c_void_p,
            ctypes.c_size_t,
            ctypes.c_void_p,
            ctypes.c_void_p,
            ctypes.c_size_t,
            ctypes.c_void_p,
            ctypes.POINTER(Error),
        ],
    ),
    "tidora_filter": (
        ctypes.c_int,
        [
            ctypes.POINTER(FieldGrid),
            ctypes.c_void_p,
            ctypes.c_size_t,
            ctypes.c_void_p,
            ctypes.POINTER(FilterOptions),
            ctypes.c_void_p,
            ctypes.POINTER(Error),
        ],
    ),
    "tidora_measure": (
        ctypes.c_int,
        [
            ctypes.c_size_t,
            ctypes.c_size_t,
            ctypes.c_void_p,
            ctypes.c_size_t,
            ctypes.c_void_p,
            ctypes.c_int64,
            ctypes.c_void_p,
            ctypes.POINTER(Error),
        ],
    ),
}
"""What is called."""

FIGURES = np.dtype(
    [
        ("highest", np.float32),
        ("lowest", np.float32),
        ("highest_at", np.int64),
        ("lowest_at", np.int64),
        ("raised", np.float64),
        ("lowered", np.float64),
        ("squares", np.float64),
    ]
)
"""tidora_figures"""
