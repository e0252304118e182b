#include "lanes/LaneFunctionsTable.h"
#include "simd/Avx512Lanes.h"

using tidora::Avx512Lanes;

template <>
const LaneFunctions LaneFunctionsOf<Avx512Lanes>::kTable = MakeLaneFunctions<Avx512Lanes>();
template <>
const FloatLaneFunctions LaneFunctionsOf<Avx512Lanes>::kFloatTable = MakeFloatLaneFunctions<Avx512Lanes>();
template <>
const EightFloatFunctions LaneFunctionsOf<Avx512Lanes>::kEightTable = MakeEightFloatFunctions<Avx512Lanes>();
