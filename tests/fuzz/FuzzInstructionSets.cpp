#include <iostream>

#include "AgreeingSets.h"
#include "FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string disagreement = DisagreementOn(data, size);
    if (!disagreement.empty()) {
        std::cerr << disagreement << '\n';
    }
    Require(disagreement.empty());
    return 0;
}
