#include "deform/ColumnLoops.h"

namespace tidora {

template <>
const ColumnPasses ColumnPassesOf<Avx2Lanes>::kTable = MakeColumnPasses<Avx2Lanes>();

}  // namespace tidora
