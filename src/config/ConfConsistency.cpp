#include <iostream>

#include "config/ConfReader.h"
#include "support/ErrorBlock.h"

namespace tidora {

// The texts are fixed, slips of spelling included. Tests: "the flags as constructed contradict each other",
// "a deformation without a fault is refused with two details".
void ConfReader::checkConsistency() const {
    const char* const object = "PARAMETER FILE IS INCONSISTENCY";
    if (iniWaveSet == faultSet) {  // both sources of the wave, or none
        ReportError(std::cerr, object,
                    {R"(You should make a choice between "setting Ini Wave Heigh" or setting "Fault Parameter".)"});
    } else if (topoDeform && !faultSet) {
        ReportError(std::cerr, object,
                    {R"(If you want to deform grand, You should make a choice setting "Fault Parameter".)",
                     R"(Particular attention should be given to "TopographyDeformation".)"});
    }
}

}  // namespace tidora
