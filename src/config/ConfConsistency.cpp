#include <iostream>

#include "config/ConfReader.h"
#include "support/ErrorBlock.h"

namespace tidora {

void ConfReader::checkConsistency() const {
    const char* const object = "PARAMETER FILE IS INCONSISTENCY";
    if (iniWaveSet == faultSet) {
        ReportError(std::cerr, object,
                    {R"(You should make a choice between "setting Ini Wave Heigh" or setting "Fault Parameter".)"});
    } else if (topoDeform && !faultSet) {
        ReportError(std::cerr, object,
                    {R"(If you want to deform grand, You should make a choice setting "Fault Parameter".)",
                     R"(Particular attention should be given to "TopographyDeformation".)"});
    }
}

}  // namespace tidora
