#include "region/RegionWriting.h"

#include <iostream>

#include "support/ErrorBlock.h"

namespace tidora {

void ReportBinError(WriteError error, const Region& region) {
    const std::string action = "Abnormal action at Writing BIN File Method.";
    const std::string attention = "Particular attention should be given to ";
    if (error == WriteError::CannotWrite) {
        // Kept on purpose: the name shown is the region's input grid, not the path that failed.
        ReportError(std::cerr, "REGION OBJECT METHOD",
                    {action, "Can not open file.", attention + "\"Region BIN File\".",
                     "Region BIN File > " + region.inFileName});
    } else {
        ReportError(std::cerr, "REGION OBJECT METHOD", {action, attention + "\" \"."});
    }
}

}  // namespace tidora
