#pragma once

#include <ctime>

namespace tidora {

/// Processor time of the whole process since construction, for the lines that say how long a step took. Waiting for a
/// disk is not in it.
class CpuClock {
public:
    /// Seconds. A tick is a microsecond on every POSIX system, whatever the resolution of its clock.
    [[nodiscard]] double Seconds() const noexcept { return static_cast<double>(std::clock() - m_start) / 1000000.0; }

private:
    std::clock_t m_start = std::clock();
};

}  // namespace tidora
