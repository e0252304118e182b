# One interface target carries what every target of this project is compiled with.
add_library(tidora_flags INTERFACE)

# a * b + c has two answers once a compiler may fuse it. The formulas fix their roundings, so nothing is fused,
# whatever instruction set is chosen on the command line.
target_compile_options(tidora_flags INTERFACE -ffp-contract=off)

# Nothing reads errno behind a mathematical function, nor the floating-point exception flags. Without them a square root
# is one instruction and a choice between two values is no branch; no result changes.
target_compile_options(tidora_flags INTERFACE -fno-math-errno -fno-trapping-math)

target_compile_options(
  tidora_flags
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Wshadow
            -Wconversion
            -Wfloat-conversion
            -Wdouble-promotion
            -Wold-style-cast
            -Wnon-virtual-dtor
            $<$<BOOL:${TIDORA_WARNINGS_AS_ERRORS}>:-Werror>)
