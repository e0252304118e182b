#include "deform/ColumnKernels.h"

namespace tidora {

extern const ColumnKernels kBaselineColumnKernels;
#ifdef TIDORA_X86_KERNELS
extern const ColumnKernels kAvx2ColumnKernels;
extern const ColumnKernels kAvx512ColumnKernels;
#endif

const ColumnKernels& ColumnKernelsOf([[maybe_unused]] InstructionSet set) noexcept {
#ifdef TIDORA_X86_KERNELS
    switch (set) {
        case InstructionSet::Avx512:
            return kAvx512ColumnKernels;
        case InstructionSet::Avx2:
            return kAvx2ColumnKernels;
        case InstructionSet::Baseline:
            break;
    }
#endif
    return kBaselineColumnKernels;
}

}  // namespace tidora
