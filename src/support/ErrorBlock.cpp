#include "support/ErrorBlock.h"

#include <ostream>

namespace tidora {

// Printed by this function alone, so that no block differs from another in more than its words.
void ReportError(std::ostream& err, std::string_view object, const std::vector<std::string>& details) {
    err << kErrorFrame << '\n' << "ERROR:" << object << '\n';
    for (const std::string& detail : details) {
        err << "  ERROR-DETAIL:" << detail << '\n';
    }
    err << kErrorFrame << std::endl;
}

}  // namespace tidora
