#pragma once

namespace tidora {

/// One rectangular fault element. The reference point is the start of its upper edge.
struct FAULT_PARAM {
    double org_x = 0.0;       ///< reference point, east: longitude or plane x
    double org_y = 0.0;       ///< reference point, north: latitude or plane y
    double baseOffset = 0.0;  ///< m; added to a point's topography it is the depth there, with several elements
    double depth = 0.0;       ///< depth of the reference point, m, positive downward; used with one element
    double strike = 0.0;      ///< degrees clockwise from north
    double dip = 0.0;         ///< degrees
    double rake = 0.0;        ///< degrees
    double length = 0.0;      ///< along strike, m
    double width = 0.0;       ///< down dip, m
    double slip = 0.0;        ///< m; exactly 0 contributes nothing
    double lagtime = 0.0;     ///< start of the slip, s
    double duration = 0.0;    ///< length of the slip, s
};

}  // namespace tidora
