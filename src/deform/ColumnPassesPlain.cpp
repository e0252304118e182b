#include "deform/ColumnLoops.h"

namespace tidora {

template <>
const ColumnPasses ColumnPassesOf<PlainLanes>::kTable = MakeColumnPasses<PlainLanes>();

}  // namespace tidora
