#include "FuzzInput.h"
#include "region/Region.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Silence silence;
    const FuzzFile file(data, size);
    tidora::Region region;
    region.inFileName = file.Path();
    if (region.ReadFile() == 1) {
        Require(region.nx >= 1 && region.ny >= 1 && region.dataNum == std::int64_t{region.nx} * region.ny);
        Require(static_cast<std::size_t>(region.dataNum) <= size && region.dx == region.dy);
    } else {
        Require(region.val == nullptr);
    }
    region.FreeVecMem();
    return 0;
}
