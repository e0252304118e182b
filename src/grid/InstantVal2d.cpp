#include "grid/InstantVal2d.h"

#include <algorithm>
#include <utility>

namespace tidora {

InstantVal2d::InstantVal2d(const InstantVal2d& other) : num(other.num), val(new float[other.num]()) {
    if (other.val != nullptr) {
        std::copy_n(other.val, num, val);
    }
}

InstantVal2d::InstantVal2d(InstantVal2d&& other) noexcept
    : num(std::exchange(other.num, 0)), val(std::exchange(other.val, nullptr)) {}

InstantVal2d& InstantVal2d::operator=(const InstantVal2d& other) {
    if (this != &other) {
        *this = InstantVal2d(other);  // the copy first: when it throws, nothing has changed here
    }
    return *this;
}

// By swapping: right for an assignment to itself too, and the destructor of `other` frees what this held.
InstantVal2d& InstantVal2d::operator=(InstantVal2d&& other) noexcept {
    std::swap(num, other.num);
    std::swap(val, other.val);
    return *this;
}

InstantVal2d::~InstantVal2d() {
    delete[] val;
}

void InstantVal2d::Reset(std::uint64_t count) {
    if (val == nullptr || num != count) {
        float* const fresh = new float[count];  // before the old one goes: it may throw
        delete[] std::exchange(val, fresh);
        num = count;
    }
    std::fill_n(val, num, 0.0F);
}

// Test: "a cleared snapshot holds a fresh array of no values".
void InstantVal2d::Clear() {
    delete[] std::exchange(val, new float[0]);
    num = 0;
}

}  // namespace tidora
