#include "main/RunSequence.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <memory>
#include <system_error>

#include "main/RunChecks.h"
#include "support/CpuClock.h"

namespace tidora {
namespace {

// The constants of the deformation, which no configuration changes. Equal Lame constants, in any common unit, make a
// Poisson solid (ratio 0.25), the usual one for rock. Sideways motion of a slope lifts the water where it is deeper
// than 50 m: a choice of this program, which keeps shores and shallows out of the term. In single precision, as the
// routines take them.
constexpr float kMu = 1.0F;
constexpr float kLambda = 1.0F;
constexpr float kHorzMinDepth = 50.0F;

/// Values of a region's grid. Requires: it was read, so that its size is one.
std::uint64_t SizeOf(const Region& region) noexcept {
    return static_cast<std::uint64_t>(std::int64_t{region.nx} * region.ny);
}

/// Closes the lines of a step. The one text of a run that is never the same twice.
void PrintCalcTime(const CpuClock& clock) {
    std::cout << "<<<<< Calc Time : " << clock.Seconds() << "[sec]" << std::endl;
}

/// One snapshot of zeros per interval.
void ResetSnapshots(Region& region, std::size_t intervals) {
    region.instants.resize(intervals);
    for (InstantVal2d& snapshot : region.instants) {
        snapshot.Reset(SizeOf(region));
    }
}

/// Largest value of the first snapshot, at least 0: kept on purpose, a sea that only sinks shows 0. Test:
/// "the-largest-value-of-a-sunken-sea-is-0".
float LargestOfFirst(const Region& region) noexcept {
    float largest = 0.0F;
    if (!region.instants.empty()) {
        const InstantVal2d& first = region.instants.front();
        for (std::uint64_t at = 0; at < first.num; ++at) {
            largest = std::max(largest, first.val[at]);
        }
    }
    return largest;
}

/// Creates `path` and what is missing above it, without a shell, to which a name would be a command. A failure shows
/// when the first file is opened. Test: "a-semicolon-in-the-name-of-the-output-directory-reaches-no-shell".
void CreateOutputDirectory(const std::string& path) {
    std::error_code ignored;
    std::filesystem::create_directories(path, ignored);
}

}  // namespace

RunSequence::RunSequence(const ConfReader& conf) : m_conf(conf), m_linear(conf.linear) {}

RunSequence::~RunSequence() {
    ReleaseRegions();
}

/// The regions in ascending number, whatever their order in the file, so that a parent is done before its child.
/// Test: "regions-are-processed-in-ascending-number".
RunCode RunSequence::Run() {
    if (const RunCode code = SetUp(); code != RunCode::Success) {
        return code;
    }
    for (const auto& [number, region] : m_topography) {
        if (const RunCode code = RunRegion(number); code != RunCode::Success) {
            return code;
        }
    }
    CleanUp();
    return RunCode::Success;
}

/// The faults before the topography: a slip of the pen in a small file shows before a large one is read.
RunCode RunSequence::SetUp() {
    if (!CheckRunnable(m_conf)) {
        return RunCode::Configuration;
    }
    BuildRegionTables();
    if (const RunCode code = ReadFaults(); code != RunCode::Success) {
        return code;
    }
    CollectIntervals();
    return ReadFirstTopography();
}

/// The phases of one region. A configuration that was read has exactly one fault, so that the first condition holds in
/// every run of the program; without one, the band alone would make the wave.
RunCode RunSequence::RunRegion(int number) {
    RegionSet set = SetOf(number);
    if (set.topography.ReadFile() == 0) {
        return RunCode::Topography;
    }
    PrepareRegion(set);
    if (!m_faults.empty()) {
        if (const RunCode code = Deform(set); code != RunCode::Success) {
            return code;
        }
        FormInitialWave(set);
    }
    if (const RunCode code = AddLinearBand(set); code != RunCode::Success) {
        return code;
    }
    if (const RunCode code = Filter(set); code != RunCode::Success) {
        return code;
    }
    return Write(set);
}

/// After a failure the destructor releases what there is, and nothing is printed.
void RunSequence::CleanUp() {
    ReleaseRegions();
    std::cout << "Free Fault Vec" << std::endl;
    for (Fault& fault : m_faults) {
        fault.FreeVecMem();
    }
    std::cout << "Completed" << std::endl;
}

void RunSequence::BuildRegionTables() {
    for (const auto& [number, param] : m_conf.regions) {
        m_topography.emplace(number, Region(RTYPE_TOPOGRAPHY, param));
        m_vertical.emplace(number, Region(RTYPE_VERTICAL, param));
        m_horizontal.emplace(number, Region(RTYPE_HORIZONTAL, param));
        m_initialWave.emplace(number, Region(RTYPE_INITIAL_WAVE, param));
    }
}

/// All are made before the first is read; the first that cannot be read ends the run.
RunCode RunSequence::ReadFaults() {
    for (const PARAM_FAULT& param : m_conf.faults) {
        m_faults.emplace_back(param);
    }
    const bool allRead =
        std::all_of(m_faults.begin(), m_faults.end(), [](Fault& fault) { return fault.ReadFile() != 0; });
    return allRead ? RunCode::Success : RunCode::FaultFile;
}

/// One list for all faults, so that every region has the same snapshots.
void RunSequence::CollectIntervals() {
    for (Fault& fault : m_faults) {
        fault.SetDynamicParam(m_intervals.params);  // 0 means that memory has ended, and has been reported
    }
    for (const DYNAMIC_PARAM& interval : m_intervals.params) {
        PrintInterval(std::cout, interval);
    }
    std::cout << "<<<<<<<<<<<<<<<<<< Completed." << std::endl;
}

/// The first region is read here and again as the first step of its own turn, on purpose: the order of the messages of
/// a run is fixed. Test: "one-plane-element-lifts-the-sea-floor-and-the-sea-alike". A run without regions ends here,
/// with the message of a topography and no block. Test: "without-a-region-the-run-ends-after-the-fault".
RunCode RunSequence::ReadFirstTopography() {
    const bool isRead = !m_topography.empty() && m_topography.begin()->second.ReadFile() != 0;
    return isRead ? RunCode::Success : RunCode::Topography;
}

void RunSequence::PrepareRegion(RegionSet& set) {
    const Region& grid = set.topography;
    for (Region* computed : {&set.vertical, &set.horizontal, &set.initialWave}) {
        computed->Set2dStruct(grid.nx, grid.ny, grid.org_x, grid.org_y, static_cast<double>(grid.dx));
        // Without the slope term there is no horizontal part: its snapshots would be zeros, as large as the others.
        const bool isNeeded = computed != &set.horizontal || HasHorizontal();
        ResetSnapshots(*computed, isNeeded ? m_intervals.params.size() : 0);
    }
    std::cout << std::endl;
    if (HasFilter()) {
        // The region's from here on: FreeVecMem releases it.
        set.initialWave.valWork = std::make_unique<float[]>(SizeOf(grid)).release();
        if (grid.parentNo > 0) {
            m_parentWork.assign(SizeOf(m_topography.at(grid.parentNo)), 0.0F);
            set.initialWave.parentValWork = m_parentWork.data();
        }
    }
}

/// The faults in the order of the configuration, into one sum. The time is that of all of them.
RunCode RunSequence::Deform(RegionSet& set) {
    const Region& grid = set.topography;
    const CpuClock clock;
    for (Fault& fault : m_faults) {
        std::cout << ">>>>> Fault Deform : " << fault.fileName << std::endl;
        if (fault.Deform2D(kMu, kLambda, kHorzMinDepth, m_conf.calcDistance, m_conf.horizontalEffect, grid.coordType,
                           grid.nx, grid.ny, grid.org_x, grid.org_y, grid.dx, grid.val, set.vertical.instants,
                           set.horizontal.instants, m_intervals) == 0) {
            return RunCode::Deformation;
        }
    }
    PrintCalcTime(clock);
    std::cout << std::endl;
    return RunCode::Success;
}

/// The sea surface follows the sea floor at once. Each point is one sum of two terms: no order to keep.
void RunSequence::FormInitialWave(RegionSet& set) const {
    const CpuClock clock;
    std::cout << ">>>>> Initial Wave Height Calc" << std::endl;
    for (std::size_t i = 0; i < m_intervals.params.size(); ++i) {
        const InstantVal2d& vertical = set.vertical.instants[i];
        float* const wave = set.initialWave.instants[i].val;
        if (HasHorizontal()) {
            const InstantVal2d& horizontal = set.horizontal.instants[i];
            std::transform(horizontal.val, horizontal.val + horizontal.num, vertical.val, wave,
                           [](float h, float v) { return h + v; });
        } else {
            std::copy_n(vertical.val, vertical.num, wave);
        }
    }
    PrintCalcTime(clock);
}

/// Into the first interval alone. Test: "the-band-is-added-to-the-first-interval-alone".
RunCode RunSequence::AddLinearBand(RegionSet& set) {
    // A height that is not a number is not greater than 0: no band.
    if (m_linear.mode < 0 || !(m_linear.height > 0.0)) {
        return RunCode::Success;
    }
    const Region& grid = set.topography;
    const CpuClock clock;
    std::cout << ">>>>> Linear Wave Height Calc" << std::endl;
    if (!m_linear.LinearTdr2D(grid.nx, grid.ny, grid.org_x, grid.org_y, grid.dx, grid.val, set.initialWave.instants)) {
        return RunCode::Deformation;
    }
    PrintCalcTime(clock);
    return RunCode::Success;
}

RunCode RunSequence::Filter(RegionSet& set) {
    if (!HasFilter()) {
        return RunCode::Success;
    }
    std::cout << "maxval = " << LargestOfFirst(set.initialWave) << std::endl;
    const CpuClock clock;
    std::cout << ">>>>> Kajiura Filter Calc" << std::endl;
    const int parentNo = set.topography.parentNo;
    int isDone = 0;
    if (parentNo > 0) {
        const Region& parent = m_topography.at(parentNo);
        isDone = set.initialWave.KajiuraFilterNesting(set.topography.val, parentNo, parent.nx, parent.ny, parent.org_x,
                                                      parent.org_y, parent.dx, m_vertical.at(parentNo).instants,
                                                      m_horizontal.at(parentNo).instants);
    } else {
        isDone = set.initialWave.KajiuraFilterNesting(set.topography.val, 0, 0, 0, 0.0, 0.0, 0.0F, {}, {});
    }
    if (isDone == 0) {
        return RunCode::KajiuraFilter;
    }
    PrintCalcTime(clock);
    return RunCode::Success;
}

/// Kept on purpose: the codes name a topography and a map file, not the series that failed. Tests:
/// "an-initial-wave-grid-that-cannot-be-opened-is-reported-as-topography",
/// "a-vertical-grid-that-cannot-be-opened-is-reported-as-map-file".
RunCode RunSequence::Write(RegionSet& set) const {
    CreateOutputDirectory(m_conf.outDir);
    if (set.initialWave.WriteBINDynamic(m_conf.outDir, m_intervals) == 0) {
        return RunCode::Topography;
    }
    if (set.vertical.WriteBINDynamic(m_conf.outDir, m_intervals) == 0) {
        return RunCode::MapFile;
    }
    if (HasHorizontal() && set.horizontal.WriteBINDynamic(m_conf.outDir, m_intervals) == 0) {
        return RunCode::MapFile;
    }
    return RunCode::Success;
}

RunSequence::RegionSet RunSequence::SetOf(int number) {
    return {m_topography.at(number), m_initialWave.at(number), m_vertical.at(number), m_horizontal.at(number)};
}

/// Harmless twice. The work array of the parent's snapshots is no region's: it goes with this object.
void RunSequence::ReleaseRegions() {
    for (RegionTable* table : {&m_topography, &m_initialWave, &m_vertical, &m_horizontal}) {
        for (auto& [number, region] : *table) {
            region.FreeVecMem();
        }
    }
}

}  // namespace tidora
