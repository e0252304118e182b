#include "deform/ColumnLoops.h"

namespace tidora {

template <>
const ColumnPasses ColumnPassesOf<Avx512Lanes>::kTable = MakeColumnPasses<Avx512Lanes>();

}  // namespace tidora
