// Numbers without measure in every place that takes one: whole runs with slope term, band and filter end cleanly.

#include <doctest/doctest.h>

#include <cmath>
#include <limits>

#include "robustness/Outcome.h"
#include "unit/ExpectedText.h"

namespace {

constexpr const char* kAbsurdNumbers[] = {"nan", "inf", "-inf", "1e308", "-1e308", "1e-310"};
constexpr int kColumns = 13;

/// A line of a fault file with one column replaced.
std::string LineWith(int column, const std::string& value, std::vector<std::string> columns) {
    columns.at(static_cast<std::size_t>(column - 1)) = value;
    std::string line;
    for (const std::string& text : columns) {
        line += (line.empty() ? "" : " ") + text;
    }
    return line + "\n";
}

const std::vector<std::string> kPlaneColumns = {"1000", "1500", "500", "300", "10", "40", "90",
                                                "1500", "1000", "2",   "0",   "0",  "5"};
const std::vector<std::string> kGeographicColumns = {"38.1", "142.2", "500", "300", "10", "40", "90",
                                                     "1500", "1000",  "2",   "0",   "0",  "5"};

constexpr const char* kGeographicGrid = "3 3\n142 38 142.2 38.2\n-90 -100 -110\n-90 -100 -120\n-90 -100 -130\n";

Configuration Geographic() {
    return Configuration().Set(kFaultKind, "1").Set(kRegionKind, "1").Set(kFilter, "0");
}

/// PROJ may print lines of its own before the blocks.
Ending WithoutForeignLines(Ending ending) {
    const std::size_t firstFrame = ending.err.find(kFrameLine);
    ending.err.erase(0, firstFrame == std::string::npos ? ending.err.size() : firstFrame);
    return ending;
}

}  // namespace

TEST_CASE("an absurd number in a column of one element ends the run cleanly") {
    for (int column = 1; column <= kColumns; ++column) {
        for (const std::string value : {"nan", "-inf", "1e308"}) {
            CAPTURE(column);
            CAPTURE(value);
            const RunFolder folder;
            folder.Put("fault.txt", LineWith(column, value, kPlaneColumns));
            CheckSuccess(RunIn(folder.Path()), folder);
        }
    }
}

TEST_CASE("absurd numbers in a column of many elements end the run cleanly, with the point source and without") {
    for (int column = 1; column <= kColumns; ++column) {
        for (const std::string tolerance : {"0", "0.001"}) {
            CAPTURE(column);
            CAPTURE(tolerance);
            const RunFolder folder;
            std::string faults;
            for (const char* const value : kAbsurdNumbers) {
                faults += LineWith(column, value, kPlaneColumns);
            }
            folder.Put("fault.txt", faults);
            folder.Put(Configuration().Set(kTolerance, tolerance));
            CheckSuccess(RunIn(folder.Path()), folder);
        }
    }
}

TEST_CASE("an element at an absurd place on the globe ends the run cleanly") {
    const struct {
        int column;
        const char* values[8];
    } kPlaces[] = {
        {1, {"nan", "inf", "-1e308", "90", "-90", "91", "142", "1e-310"}},
        {2, {"nan", "inf", "-1e308", "180", "-180", "540", "1e9", "1e-310"}},
    };
    for (const auto& place : kPlaces) {
        for (const char* const value : place.values) {
            CAPTURE(place.column);
            CAPTURE(value);
            const RunFolder folder;
            folder.Put("fault.txt", LineWith(place.column, value, kGeographicColumns));
            folder.Put("topo.txt", kGeographicGrid);
            folder.Put(Geographic());
            const Ending ending = WithoutForeignLines(RunIn(folder.Path()));
            CheckCleanEnd(ending, folder);
            if (ending.status != "0") {
                CheckFailure(ending, folder, kDeformError, "Can not calculate deformation.");
            }
        }
    }
}

TEST_CASE("an element whose reach goes around the globe, or has no measure, ends the run cleanly") {
    for (const int column : {8, 9, 10}) {  // length, width, slip
        for (const std::string value : {"1e30", "1e308", "nan"}) {
            CAPTURE(column);
            CAPTURE(value);
            const RunFolder folder;
            folder.Put("fault.txt", LineWith(column, value, kGeographicColumns));
            folder.Put("topo.txt", kGeographicGrid);
            folder.Put(Geographic().Set(kTolerance, "0.001"));
            CheckSuccess(RunIn(folder.Path()), folder);
        }
    }
}

TEST_CASE("a grid at an absurd place on the globe ends the run cleanly") {
    for (const char* const header :
         {"nan 38 nan 38.2", "142 inf 142.2 inf", "142 89 143 90", "142 1e300 142.2 1e300", "1e9 38 1000000000.2 38.2",
          "179.9 38 180.1 38.2", "142 -1000 1142 0", "0 0 0 0", "142.2 38.2 142 38"}) {
        CAPTURE(header);
        const RunFolder folder;
        std::string grid = kGeographicGrid;
        grid.replace(grid.find("142 38 142.2 38.2"), std::string("142 38 142.2 38.2").size(), header);
        folder.Put("topo.txt", grid);
        folder.Put("fault.txt", LineWith(1, "38.1", kGeographicColumns));
        folder.Put(Geographic());
        CheckCleanEnd(WithoutForeignLines(RunIn(folder.Path())), folder);
    }
}

TEST_CASE("an absurd number in the second line of a text grid ends the run cleanly") {
    for (const std::string place : {"x y 2000 2000", "0 0 x x", "0 0 2000 x", "x 0 2000 2000"}) {
        for (const std::string value : kAbsurdNumbers) {
            std::string header = place;
            for (std::size_t at = 0; at < header.size(); ++at) {
                if (header[at] == 'x' || header[at] == 'y') {
                    header.replace(at, 1, header[at] == 'x' ? value : "0");
                    at += value.size() - 1;
                }
            }
            CAPTURE(header);
            const RunFolder folder;
            folder.Put("topo.txt", "2 2\n" + header + "\n-90 -100\n-90 -100\n");
            CheckCleanEnd(RunIn(folder.Path()), folder);
        }
    }
}

TEST_CASE("an absurd number in the header of a binary grid ends the run cleanly") {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const double kNumbers[] = {std::nan(""), kInfinity, -kInfinity, 1e308, 1e-45, 0.0, -1000.0};
    for (int field = 0; field < 3; ++field) {
        for (const double number : kNumbers) {
            CAPTURE(field);
            CAPTURE(number);
            const RunFolder folder;
            folder.Put(Configuration().Set(kTopography, "topo.bin"));
            const bool isSingle = std::abs(number) <= static_cast<double>(std::numeric_limits<float>::max());
            const auto spacing = static_cast<float>(isSingle || !std::isfinite(number) ? number : 3e38);
            folder.Put("topo.bin", BinaryGrid(field == 0 ? number : 0, field == 1 ? number : 0, 3, 3,
                                              field == 2 ? spacing : 1000.0F));
            CheckSuccess(RunIn(folder.Path()), folder);
        }
    }
}

TEST_CASE("absurd depths end the run cleanly") {
    for (const std::string value : kAbsurdNumbers) {
        CAPTURE(value);
        const RunFolder folder;
        folder.Put("topo.txt", "3 3\n0 0 2000 2000\n-90 -100 -110\n-90 " + value + " -120\n-90 -100 -130\n");
        CheckSuccess(RunIn(folder.Path()), folder);
        folder.Put("topo.txt", "2 2\n0 0 2000 2000\n" + value + " " + value + "\n" + value + " " + value + "\n");
        folder.Remove("out");
        CheckSuccess(RunIn(folder.Path()), folder);
    }
}

TEST_CASE("an absurd number in the configuration ends the run cleanly") {
    for (const Slot slot : {kTolerance, kBandHeight, kBandWidth}) {
        for (const std::string value : {"nan", "inf", "-inf", "1e308", "1e-310", "0", "-1"}) {
            CAPTURE(static_cast<int>(slot));
            CAPTURE(value);
            const RunFolder folder;
            folder.Put(Configuration().Set(slot, value));
            const Ending ending = RunIn(folder.Path());
            const bool isNegativeTolerance = slot == kTolerance && value[0] == '-';
            if (isNegativeTolerance) {
                CheckFailure(ending, folder, kDeformError, "Can not calculate deformation.");
            } else {
                CheckSuccess(ending, folder);
            }
        }
    }
}

TEST_CASE("switches and numbers at the ends of 32 bits end the run cleanly") {
    for (const Slot slot : {kHorizontal, kFilter, kBandMode, kRegionNumber, kParent, kFaultKind, kRegionKind}) {
        for (const std::string value : {"2147483647", "-2147483648", "4294967296"}) {
            CAPTURE(static_cast<int>(slot));
            CAPTURE(value);
            const RunFolder folder;
            folder.Put(Configuration().Set(slot, value));
            CheckCleanEnd(RunIn(folder.Path()), folder);
        }
    }
}
