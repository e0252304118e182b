#pragma once

#include <string>
#include <vector>

#include "ExampleInputs.h"
#include "ProgramRun.h"
#include "SeriesFiles.h"

/// The nested example, run once for all cases of its suite.
[[nodiscard]] const ExampleRun& NestedRun();

/// The intervals of the rupture in the order in which the fault file names them first.
[[nodiscard]] const StartTimes& NestedStarts();

/// Topography of region "parent" or "child".
[[nodiscard]] InputGrid NestedTopography(const std::string& region);

/// The subfaults with their total slip.
[[nodiscard]] std::vector<Subfault> NestedSubfaults();

/// One grid of the run. series: "VRT_parent" and the like; start: s.
[[nodiscard]] SeriesGrid NestedGrid(const std::string& series, int start);

/// Sum of one series of the run.
[[nodiscard]] SummedGrid NestedSum(const std::string& series);
