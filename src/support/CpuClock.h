#pragma once

#include <ctime>

namespace tidora {

/// Processor time since construction.
class CpuClock {
public:
    /// Seconds of processor time, POSIX ticks of a microsecond.
    [[nodiscard]] double Seconds() const noexcept { return static_cast<double>(std::clock() - m_start) / 1000000.0; }

private:
    std::clock_t m_start = std::clock();
};

}  // namespace tidora
