#pragma once

#include <doctest/doctest.h>

#include <cmath>
#include <string>

namespace tidora::golden {

/// Collects errors and keeps the largest with the place where it occurred. NaN counts as larger than any number.
class LargestError {
public:
    void Add(double error, const std::string& where) {
        const double size = std::abs(error);
        const bool isLarger = std::isnan(size) || size > m_value;
        if (m_count == 0 || (isLarger && !std::isnan(m_value))) {
            m_value = size;
            m_where = where;
        }
        ++m_count;
    }

    [[nodiscard]] double Value() const noexcept { return m_value; }

    /// Shows the figure in the output of the test and holds it to the bound.
    void Report(const std::string& what, double bound) const {
        MESSAGE(what, ": largest error ", m_value, " (bound ", bound, ", ", m_count, " values, at ", m_where, ")");
        REQUIRE(m_count > 0);
        CHECK(m_value <= bound);
    }

private:
    double m_value = 0.0;
    std::string m_where;
    long m_count = 0;
};

}  // namespace tidora::golden
