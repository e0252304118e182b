// The quotients of the filter's series, for every digit sequence that a divisor can have. Included by one source per
// instruction set, which names the function it becomes with TIDORA_WRONG_QUOTIENTS. Like the kernel itself it uses
// nothing that other sources share: no instruction of one set may reach another.

#define TIDORA_FILTER_POINTS TIDORA_FILTER_POINTS_OF_TEST
#include "region/KajiuraKernel.h"

#include "parity/WrongQuotients.h"

std::int64_t TIDORA_WRONG_QUOTIENTS() {
    using namespace tidora;
    constexpr std::uint32_t kDigits = std::uint32_t{1} << 23U;
    constexpr std::uint32_t kOne = 0x3F800000;  // the bits of 1.0F: the digits of 1 to 2 follow
    std::int64_t wrong = 0;
    for (std::uint32_t digits = 0; digits < kDigits; digits += kFloats) {
        float below[kFloats], quotient[kFloats];
        for (std::uint32_t lane = 0; lane < kFloats; ++lane) {
            const std::uint32_t bits = kOne + digits + lane;
            __builtin_memcpy(&below[lane], &bits, sizeof bits);
        }
        const Floats divisors = LoadFloats(below);
        for (std::size_t n = 1; n < kKernelTerms; ++n) {
            StoreFloats(quotient, Quotient(AllOf(kSeries[n]), divisors));
            for (std::size_t lane = 0; lane < kFloats; ++lane) {
                wrong += quotient[lane] == kSeries[n] / below[lane] ? 0 : 1;
            }
        }
    }
    return wrong;
}
