#include <vector>

#include "FuzzInput.h"
#include "fault/Fault.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Silence silence;
    const FuzzFile file(data, size);
    tidora::Fault fault;
    fault.fileName = file.Path();
    if (fault.ReadFile() == 1) {
        Require(fault.elements.size() <= size / 19);  // ten numbers and nine blanks at least
        std::vector<tidora::DYNAMIC_PARAM> intervals;
        Require(fault.SetDynamicParam(intervals) == 1 && intervals.size() <= fault.elements.size());
    }
    return 0;
}
