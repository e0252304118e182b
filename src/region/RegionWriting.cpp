#include "region/RegionWriting.h"

#include <iostream>

#include "support/ErrorBlock.h"

namespace tidora {

void ReportBinError(WriteError error, const Region& region) {
    const std::string action = "Abnormal action at Writing BIN File Method.";
    const std::string attention = "Particular attention should be given to ";
    if (error == WriteError::CannotWrite) {
        // Kept on purpose: the name shown is the region's input grid, not the path that failed; a computed region has
        // none. Test: "the block of a computed region's series ends with an empty name".
        ReportError(std::cerr, "REGION OBJECT METHOD",
                    {action, "Can not open file.", attention + "\"Region BIN File\".",
                     "Region BIN File > " + region.inFileName});
    } else {
        // The text has no name in its quotes; that is fixed as well.
        ReportError(std::cerr, "REGION OBJECT METHOD", {action, attention + "\" \"."});
    }
}

}  // namespace tidora
