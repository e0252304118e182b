#include "lanes/LaneFunctionsTable.h"
#include "simd/PlainLanes.h"

using tidora::PlainLanes;

template <>
const LaneFunctions LaneFunctionsOf<PlainLanes>::kTable = MakeLaneFunctions<PlainLanes>();
template <>
const FloatLaneFunctions LaneFunctionsOf<PlainLanes>::kFloatTable = MakeFloatLaneFunctions<PlainLanes>();
template <>
const EightFloatFunctions LaneFunctionsOf<PlainLanes>::kEightTable = MakeEightFloatFunctions<PlainLanes>();
