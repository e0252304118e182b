#pragma once

#include "config/ConfReader.h"

namespace tidora {

/// What a configuration may say and a run cannot do. Asked before any other file is read: a run of hours shall not end
/// at its last region. The reader of the configuration accepts it, because it is no matter of the format.
///
/// Refused are co-ordinate kinds other than 0 and 1; with the filter on, a parent
/// that names no region, or one that is processed later than its child. True when there is nothing of the kind; else
/// false after a framed block on standard error that names the values.
[[nodiscard]] bool CheckRunnable(const ConfReader& conf);

}  // namespace tidora
