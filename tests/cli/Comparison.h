#pragma once

#include <string>
#include <vector>

#include "CaseFile.h"
#include "ChildProcess.h"

/// What differs between a case and its run in `folder`: the exit status, both streams, and every file and directory,
/// also the ones that the case does not name. One text per difference, for people to read; empty when all is well.
[[nodiscard]] std::vector<std::string> DifferencesOf(const CaseFile& expected, const ProcessResult& result,
                                                     const std::string& folder);
