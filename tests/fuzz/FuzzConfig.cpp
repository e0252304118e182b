#include "FuzzInput.h"
#include "config/ConfReader.h"
#include "main/RunChecks.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Silence silence;
    const FuzzFile file(data, size);
    tidora::ConfReader conf(file.Path());
    if (conf.readParam()) {
        Require(conf.faults.size() == 1);
        for (const auto& [number, region] : conf.regions) {
            Require(number == region.no && !region.topoFile.empty());
        }
        static_cast<void>(tidora::CheckRunnable(conf));
    }
    return 0;
}
