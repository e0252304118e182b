#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace tidora {

/// Kinds of horizontal co-ordinates in `PARAM_REGION::coordType` and `PARAM_FAULT::coordType`.
inline constexpr int kPlaneCoordinates = 0;       ///< x east and y north, metres
inline constexpr int kGeographicCoordinates = 1;  ///< longitude and latitude, degrees

/// One computational region as the configuration names it: a plain record, given to each of the region's grids.
struct PARAM_REGION {
    int no = 0;            ///< region number, key of `ConfReader::regions`
    std::string name;      ///< region name, part of the output file names
    int parentNo = 0;      ///< number of the enclosing (coarser) region; 0 or less: none
    int coordType = 0;     ///< kPlaneCoordinates or kGeographicCoordinates
    std::string topoFile;  ///< topography grid file
    // The configuration has no slots for the rest: a caller of the library sets them.
    double topoConst = 0.0;     ///< topography where no file is named, m. Not used by a run.
    std::string iniWaveFile;    ///< initial wave height grid file. Not used by a run.
    double iniWaveConst = 0.0;  ///< initial wave height where no file is named, m. Not used by a run.
};

/// The fault source as the configuration names it.
struct PARAM_FAULT {
    int coordType = 0;      ///< kPlaneCoordinates or kGeographicCoordinates
    std::string faultFile;  ///< fault parameter file
};

/// The band of raised water, see Linear.h. The defaults are no band.
struct PARAM_LINEAR {
    int mode = -1;          ///< profile: 0 flat, 1 cosine; negative: no band
    double height = 0.0;    ///< crest height, m; no band unless greater than 0
    double diameter = 1.0;  ///< full width across the band, in grid co-ordinate units
};

/// The configuration file, a positional list of pairs of a caption and a value line, and what it said. The reader owns
/// its values and nothing else; the file is open during readParam() alone. docs/formats.md has the format.
class ConfReader {
public:
    /// Size of the line buffer, fixed by the format: one character less for the NUL, 1022 are read at a time.
    static constexpr std::int32_t FILE_MAX_PATH = 1023;

    std::string confFile;                 ///< path of the configuration file
    std::string spareText;                ///< value 1: a title, read and kept. Not used by a run.
    std::string outDir;                   ///< value 2: output directory
    std::map<int, PARAM_REGION> regions;  ///< regions by number, ascending
    bool topoDeform = true;               ///< deform the sea floor; no value sets it. Not used by a run.
    double calcDistance = 0.0;            ///< value 3: displacement tolerance of the deformation, m
    int horizontalEffect = 0;             ///< value 4: 1 adds the uplift from horizontal motion of slopes
    int kajiuraFilter = 0;                ///< value 5: 1 filters the initial wave height
    std::vector<PARAM_FAULT> faults;      ///< values 6 and 7: exactly one record per file
    PARAM_LINEAR linear;                  ///< values 8 to 10
    bool iniWaveSet = false;              ///< a wave height is given; no value sets it. Not used by a run.
    bool faultSet = false;                ///< a fault is given; no value sets it. Not used by a run.

    /// Keeps `path`; opens nothing.
    explicit ConfReader(std::string path);

    /// Reads the whole file into the members and echoes every value on standard output.
    /// False, after a framed block on standard error, when the file cannot be opened, ends early, holds a value
    /// line without a token, or leaves a block short because value lines are commented out with "#".
    /// Members that were converted before the failure keep their values.
    [[nodiscard]] bool readParam();

    /// Prints a framed message on standard error when the flags contradict each other: initial wave and fault both set
    /// or both unset; or the sea floor to be deformed without a fault. Returns in every case: a caller that wants to
    /// stop looks at the flags. Not used by a run.
    void checkConsistency() const;

    /// True when `path` names an existing directory, also by a link. Not used by a run.
    [[nodiscard]] static bool IsExistDir(const std::string& path);

    /// Creates `path` and every directory missing above it, mode 0755 less the umask. True when it is a directory
    /// afterwards. A path of one character is never created. Not used by a run.
    static bool MakeDir(const std::string& path);
};

}  // namespace tidora
