#include "region/RegionWriting.h"

#include <iostream>

#include "support/ErrorBlock.h"

namespace tidora {

void ReportWriteError(WriteError error, const Region& region, const std::string& kind) {
    const std::string action = "Abnormal action at Writing " + kind + " File Method.";
    const std::string attention = "Particular attention should be given to ";
    if (error == WriteError::CannotWrite) {
        // Kept on purpose: the name shown is the region's input grid, not the path that failed; a computed region has
        // none. Tests: "the block of a computed region's series ends with an empty name",
        // "a text grid that cannot be opened names the input grid, and earlier ones stay".
        const std::string file = "Region " + kind + " File";
        ReportError(std::cerr, "REGION OBJECT METHOD",
                    {action, "Can not open file.", attention + "\"" + file + "\".", file + " > " + region.inFileName});
    } else {
        // The text has no name in its quotes; that is fixed as well.
        ReportError(std::cerr, "REGION OBJECT METHOD", {action, attention + "\" \"."});
    }
}

}  // namespace tidora
