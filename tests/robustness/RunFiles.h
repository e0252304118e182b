#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "unit/ScratchFolder.h"

/// The values of a configuration, by their place in the file.
enum Slot : std::size_t {
    kTitle,
    kOutDir,
    kTolerance,
    kHorizontal,
    kFilter,
    kFaultKind,
    kFaultFile,
    kBandMode,
    kBandHeight,
    kBandWidth,
    kRegionCount,
    kRegionNumber,
    kRegionName,
    kParent,
    kRegionKind,
    kTopography,
    kSlots
};

/// A configuration of one region: deformation, slope term, band and filter are on, so that a run passes every phase.
class Configuration {
public:
    Configuration();
    Configuration& Set(Slot slot, const std::string& value);
    [[nodiscard]] std::string Text() const;

private:
    std::vector<std::string> m_values;
};

/// A binary grid of zeros.
[[nodiscard]] std::string BinaryGrid(double orgX, double orgY, int nx, int ny, float dx);

/// A line of a fault file that starts at `lag` seconds.
[[nodiscard]] std::string FaultLine(int lag = 0);

inline constexpr std::string_view kSmallGrid = "3 3\n0 0 2000 2000\n-90 -100 -110\n-90 -100 -120\n-90 -100 -130\n";
inline constexpr std::uintmax_t kSmallSeriesFile = 28 + 4 * 9;  ///< bytes of a result of the small grid

/// A scratch folder with everything that a run reads: "TdrConf.txt", "fault.txt" of one element and "topo.txt", the
/// small grid. Results go to "out", which is not there yet.
class RunFolder {
public:
    RunFolder();
    [[nodiscard]] const std::string& Path() const noexcept { return m_scratch.Path(); }
    [[nodiscard]] std::string At(const std::string& name) const { return m_scratch.At(name); }
    /// Writes or replaces a file.
    void Put(const std::string& name, std::string_view bytes) const;
    void Put(const Configuration& configuration) const { Put("TdrConf.txt", configuration.Text()); }
    /// Makes a folder that everybody may write to.
    void MakeFolder(const std::string& name) const;
    void Remove(const std::string& name) const;
    /// Puts a symbolic link in the place of `name`.
    void Link(const std::string& name, const std::string& target) const;
    void SetMode(const std::string& name, unsigned mode) const;

private:
    ScratchFolder m_scratch;
};
