#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// Makes a source and points, a grid to be deformed or a grid to be filtered of the bytes, and evaluates it with every
/// instruction set of this machine: dislocations must be those of the scalar routines, to the card of the batch; a
/// deformation must be that of the first set, to twice what parity with the literal version allows to each; the
/// filter's bits must be the same. Returns what is not so, or an empty text.
std::string DisagreementOn(const std::uint8_t* data, std::size_t size);
