#pragma once

#include <map>
#include <vector>

#include "config/ConfReader.h"
#include "fault/DynamicParam.h"
#include "fault/Fault.h"
#include "linear/Linear.h"
#include "region/Region.h"

namespace tidora {

/// How a run ended; the values are the codes of the driver's message table (RunMessages.cpp), which fixes what is
/// shared: a code may stand for an activity that its message does not name.
enum class RunCode {
    Success = 0,
    Configuration = 1,  ///< it cannot be read, or asks for what a run cannot do
    FaultFile = 2,
    Topography = 3,      ///< also a run without a region, and an initial-wave series that cannot be written
    Deformation = 4,     ///< also the linear band
    MapFile = 15,        ///< a vertical or horizontal series that cannot be written
    KajiuraFilter = 22,  ///< kept for the table: the filter has no failure
};

/// The body of a run, once the configuration is read: regions, fault and intervals are set up, then every region is
/// deformed, filtered and written in ascending number. Progress goes to standard output, error blocks to standard
/// error; the texts and their order are fixed.
///
/// Owns all grids and releases them once, at the end of the run or with the object. None goes earlier, although only
/// the filter of a child looks back at its parent. Out of memory passes through as an exception. One thread.
class RunSequence {
public:
    /// Takes the values of `conf`, which outlives the run.
    explicit RunSequence(const ConfReader& conf);
    ~RunSequence();
    RunSequence(const RunSequence&) = delete;
    RunSequence& operator=(const RunSequence&) = delete;

    /// Runs every phase in order; the first failure ends it. Files already written stay.
    [[nodiscard]] RunCode Run();

private:
    using RegionTable = std::map<int, Region>;

    /// The four regions of one number, which have one geometry.
    struct RegionSet {
        Region& topography;
        Region& initialWave;
        Region& vertical;
        Region& horizontal;
    };

    // The phases, in the order of a run. One that can fail has printed its own block when it returns a code.
    [[nodiscard]] RunCode SetUp();
    [[nodiscard]] RunCode RunRegion(int number);
    void CleanUp();

    void BuildRegionTables();
    [[nodiscard]] RunCode ReadFaults();
    void CollectIntervals();
    [[nodiscard]] RunCode ReadFirstTopography();

    void PrepareRegion(RegionSet& set);
    [[nodiscard]] RunCode Deform(RegionSet& set);
    void FormInitialWave(RegionSet& set) const;
    [[nodiscard]] RunCode AddLinearBand(RegionSet& set);
    [[nodiscard]] RunCode Filter(RegionSet& set);
    [[nodiscard]] RunCode Write(RegionSet& set) const;

    [[nodiscard]] RegionSet SetOf(int number);
    // Both switches are on at 1 alone. Tests: "a-filter-value-of-2-is-no-filter",
    // "a-horizontal-effect-of-2-is-no-horizontal-effect".
    [[nodiscard]] bool HasFilter() const noexcept { return m_conf.kajiuraFilter == 1; }
    [[nodiscard]] bool HasHorizontal() const noexcept { return m_conf.horizontalEffect == 1; }
    void ReleaseRegions();

    const ConfReader& m_conf;
    // By region number, which is the order of the run; all four hold the same numbers.
    RegionTable m_topography;
    RegionTable m_initialWave;
    RegionTable m_vertical;
    RegionTable m_horizontal;
    std::vector<Fault> m_faults;
    DynamicParam m_intervals;  ///< of all faults; interval k belongs to snapshot k of every region
    Linear m_linear;
    std::vector<float> m_parentWork;  ///< the filter's sum of the parent's snapshots
};

}  // namespace tidora
