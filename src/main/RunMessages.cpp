#include "main/RunMessages.h"

#include <algorithm>
#include <iterator>
#include <ostream>

#include "support/ErrorBlock.h"

namespace tidora {
namespace {

struct RunMessage {
    int code;
    const char* text;
};

/// The table is shared with the other programs of the family and keeps its texts to the letter, slips of spelling
/// included: scripts look for them. RunCode names the codes that this program raises; some of their texts name another
/// activity than the one that failed. There is no text for 20.
constexpr RunMessage kMessages[] = {
    {1, "ERROR:Parameter File Parse"},
    {2, "ERROR:Read Fault Parameter"},
    {3, "ERROR:Read Topography"},
    {4, "ERROR:Deform Topography"},
    {5, "ERROR:Make Shapefile"},
    {6, "ERROR:Write Calculate Prameter TEXT File"},
    {7, "ERROR:Read Station List File"},
    {8, "ERROR:Make GeoTIFF"},
    {9, "ERROR:Write OriginXY TEXT File"},
    {10, "ERROR:Calculate CFL"},
    {11, "ERROR:Comprisable:NG"},
    {12, "ERROR:Write Station File"},
    {13, "ERROR:Read Ini Wave Height"},
    {14, "ERROR:Read Roughness Coefficient"},
    {15, "ERROR:Write Wave-Breaker Map File"},
    {16, "ERROR:Write Wave-Breaker Height File"},
    {17, "ERROR:Read Extract Point File"},
    {18, "ERROR:Read Dyanmic Deformation Parameter File"},
    {19, "ERROR:Read Construction Line Parameter File"},
    {21, "ERROR:Read Land Map File"},
    {22, "ERROR:Calc Hydraulic Filter"},
    {23, "ERROR:Read Construction Line Data File"},
};

}  // namespace

const char* MessageOf(int code) noexcept {
    const auto* const found = std::find_if(std::begin(kMessages), std::end(kMessages),
                                           [code](const RunMessage& message) { return message.code == code; });
    return found == std::end(kMessages) ? nullptr : found->text;
}

void ReportRunError(std::ostream& err, int code) {
    err << kErrorFrame << '\n';  // not ReportError(): the message stands without an object and a detail
    if (const char* const text = MessageOf(code)) {
        err << text << '\n';
    }
    err << kErrorFrame << std::endl;
}

}  // namespace tidora
