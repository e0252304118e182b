#include "lanes/LaneFunctionsTable.h"
#include "simd/Avx2Lanes.h"

using tidora::Avx2Lanes;

template <>
const LaneFunctions LaneFunctionsOf<Avx2Lanes>::kTable = MakeLaneFunctions<Avx2Lanes>();
template <>
const FloatLaneFunctions LaneFunctionsOf<Avx2Lanes>::kFloatTable = MakeFloatLaneFunctions<Avx2Lanes>();
template <>
const EightFloatFunctions LaneFunctionsOf<Avx2Lanes>::kEightTable = MakeEightFloatFunctions<Avx2Lanes>();
