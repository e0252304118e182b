#include "FuzzInput.h"
#include "fault/DynamicParam.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Silence silence;
    const FuzzFile file(data, size);
    tidora::DynamicParam intervals;
    intervals.fileName = file.Path();
    if (intervals.ReadFile(60.0) == 1) {
        Require(intervals.params.size() <= size / 5);  // three numbers and two blanks at least
        for (const tidora::DYNAMIC_PARAM& interval : intervals.params) {
            const float share = tidora::SlipShare(interval, 10.0, 20.0);
            Require(!(share < 0.0F));
        }
    }
    return 0;
}
