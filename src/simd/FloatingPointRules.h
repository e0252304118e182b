#pragma once

// What every kernel source relies on, checked where a compiler says it. Included by the lane types.
//
// Sums and products are formed in the order and with the roundings that are written: results repeat bit for bit on
// every instruction set, and values that are not numbers have their documented ways. Flags on a caller's command line
// must not change that. Contraction has no macro and needs none: the library's own -ffp-contract=off comes last and
// wins. Nor have all compilers one for every part of -ffast-math. The tests of the lanes and of the bits fail with
// either.

#if defined(__FAST_MATH__) || (defined(__FINITE_MATH_ONLY__) && __FINITE_MATH_ONLY__ > 0) || \
    defined(__ASSOCIATIVE_MATH__) || defined(__RECIPROCAL_MATH__) || defined(__NO_SIGNED_ZEROS__)
#error "Tidora's results are defined to the last bit: build it without -ffast-math, -Ofast and their parts"
#endif
