#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "lanes/LaneFunctions.h"
#include "parity/EveryInstructionSet.h"
#include "simd/Dispatch.h"

// Largest errors of the functions over lanes against the constants of their cards. The references: what a fused
// operation leaves of quotients and roots, which is exact to 1e-16 of a unit in the last place, and the logarithm and
// the arctangent in long double, to 5e-4 of one.

namespace {

constexpr std::size_t kCount = 4096;

const LaneFunctions& Functions() {
    return tidora::DispatchedKernels<LaneFunctionsOf>();
}

/// Unit in the last place of a double.
double UlpOf(double value) {
    return std::ldexp(1.0, std::max(std::ilogb(value), -1022) - 52);
}

/// Four arrays, the parts of two numbers per lane.
struct Parts {
    std::vector<double> values[4];
    const double* pointers[4] = {};

    Parts() {
        for (std::vector<double>& part : values) {
            part.resize(kCount);
        }
    }
    [[nodiscard]] const double* const (&Pointers())[4] {
        for (std::size_t n = 0; n < 4; ++n) {
            pointers[n] = values[n].data();
        }
        return pointers;
    }
};

/// Numbers in [1, 2), and of any exponent within bounds.
class Numbers {
public:
    explicit Numbers(unsigned seed) : m_random(seed) {}
    double Mantissa() { return 1.0 + std::ldexp(static_cast<double>(m_random() >> 12U), -52); }
    double Wide(int largestExponent) { return std::ldexp(Mantissa(), Below(2 * largestExponent) - largestExponent); }
    int Below(int count) { return static_cast<int>(m_random() % static_cast<unsigned>(count)); }
    double Signed(double size) { return Below(2) == 0 ? size : -size; }

private:
    std::mt19937_64 m_random;
};

/// An error that is not a number would pass every comparison.
double OrInfinite(double error) {
    return std::isnan(error) ? std::numeric_limits<double>::infinity() : error;
}

/// The largest error of both results of a function over many pairs: fill(parts, numbers, i, round) sets number i of a
/// round, error(above or re, below or im, result) is its error.
double LargestError(LaneFunctions::Pairwise function, int rounds,
                    const std::function<void(double&, double&, Numbers&, int)>& fill,
                    const std::function<double(double, double, double)>& error) {
    Numbers numbers(1963);
    Parts in;
    std::vector<double> first(kCount), second(kCount);
    double largest = 0.0;
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < kCount; ++i) {
            fill(in.values[0][i], in.values[1][i], numbers, round);
            fill(in.values[2][i], in.values[3][i], numbers, round);
        }
        function(in.Pointers(), kCount, first.data(), second.data());
        for (std::size_t i = 0; i < kCount; ++i) {
            const double a = error(in.values[0][i], in.values[1][i], first[i]);
            const double b = error(in.values[2][i], in.values[3][i], second[i]);
            largest = std::max({largest, OrInfinite(a), OrInfinite(b)});
        }
    }
    return largest;
}

/// The same of a function of one number from 2^least up to 2^1021.
double LargestError(LaneFunctions::Unary function, int rounds, int least,
                    const std::function<double(double, double)>& error) {
    Numbers numbers(1985);
    std::vector<double> x(kCount), y(kCount);
    double largest = 0.0;
    for (int round = 0; round < rounds; ++round) {
        for (double& value : x) {
            // The mantissas on their own, those near a power of two, every exponent in range.
            value = std::ldexp(numbers.Mantissa(), round % 3 == 0 ? least + numbers.Below(1021 - least) : 0);
            value = round % 3 == 1 ? 1.0 + numbers.Signed(std::ldexp(1.0 + numbers.Below(4095), -53)) : value;
        }
        function(x.data(), kCount, y.data());
        for (std::size_t i = 0; i < kCount; ++i) {
            largest = std::max(largest, OrInfinite(error(x[i], y[i])));
        }
    }
    return largest;
}

/// Holds a card, and that among as many numbers an error comes near its bound: one far too wide would say nothing.
void CheckCard(const char* what, double largest, double bound, double leastShare) {
    MESSAGE(std::string(tidora::NameOf(tidora::CurrentInstructionSet())) << ", " << what << ": " << largest);
    CHECK(largest <= bound);
    CHECK(largest >= leastShare * bound);
}

}  // namespace

TEST_CASE("an inverse and a root of lanes are as exact as their cards say") {
    ForEachInstructionSet([] {
        const LaneFunctions& f = Functions();
        const double inverse = LargestError(f.inverse, 200, -1021, [](double x, double y) {
            // In the scale of 1, where nothing underflows: x y - 1 is what the inverse lacks, times x.
            const double m = std::ldexp(x, -std::ilogb(x)), n = std::ldexp(y, std::ilogb(x));
            return std::abs(std::fma(m, n, -1.0)) / (m * UlpOf(n));
        });
        CheckCard("inverse, units in the last place", inverse, f.maxUlpOfInverse + 1e-10, 0.8);
        const double root = LargestError(f.root, 200, -968, [](double x, double y) {
            const int exponent = std::ilogb(x) / 2;
            const double m = std::ldexp(x, -2 * exponent), n = std::ldexp(y, -exponent);
            return std::abs(std::fma(n, n, -m)) / (2.0 * n * UlpOf(n));
        });
        CheckCard("root, units in the last place", root, f.maxUlpOfRoot + 1e-10, 0.99);
    });
}

TEST_CASE("two quotients from one division are as exact as their card says") {
    ForEachInstructionSet([] {
        const LaneFunctions& f = Functions();
        const double largest = LargestError(
            f.quotients, 150,
            [](double& above, double& below, Numbers& numbers, int round) {
                above = numbers.Signed(round % 2 == 0 ? numbers.Wide(250) : numbers.Mantissa());
                below = numbers.Signed(round % 2 == 0 ? numbers.Wide(250) : numbers.Mantissa());
            },
            [](double above, double below, double quotient) {
                return std::abs(std::fma(quotient, below, -above) / below) / UlpOf(quotient);
            });
        CheckCard("quotient, units in the last place", largest, f.quotientMaxUlp, 0.65);
    });
}

TEST_CASE("logarithms of ratios are as exact as their card says, from equal numbers to the ends of the range") {
    ForEachInstructionSet([] {
        const LaneFunctions& f = Functions();
        const double largest = LargestError(
            f.logs, 240,
            [](double& above, double& below, Numbers& numbers, int round) {
                below = numbers.Mantissa();
                switch (round % 4) {
                    case 0:  // of one size, and equal now and then
                        above = numbers.Below(16) == 0 ? below : numbers.Mantissa();
                        break;
                    case 1:  // near 1, as near as doubles are
                        above = below * (1.0 + std::ldexp(numbers.Mantissa() - 1.5, -numbers.Below(52)));
                        break;
                    case 2:  // on both sides of the places where the whole exponent changes
                        above = below * std::exp2(0.5 * numbers.Below(13) - 3.0 + 0.1 * (numbers.Mantissa() - 1.5));
                        break;
                    default:
                        above = numbers.Wide(250);
                        below = numbers.Wide(250);
                }
            },
            [](double above, double below, double logarithm) {
                if (above == below) {
                    return logarithm == 0.0 ? 0.0 : std::numeric_limits<double>::infinity();
                }
                const auto a = static_cast<long double>(above), b = static_cast<long double>(below);
                const long double exact = 0.5L * b < a && a < 2.0L * b ? std::log1p((a - b) / b) : std::log(a / b);
                return std::abs(static_cast<double>(static_cast<long double>(logarithm) - exact)) /
                       UlpOf(static_cast<double>(exact));
            });
        CheckCard("logarithm, units in the last place", largest, f.logMaxUlp, 0.55);
    });
}

TEST_CASE("arguments of complex numbers are as exact as their card says, in all eight octants and on the axes") {
    ForEachInstructionSet([] {
        const LaneFunctions& f = Functions();
        const double largest = LargestError(
            f.arguments, 240,
            [](double& re, double& im, Numbers& numbers, int round) {
                re = numbers.Signed(round % 4 == 0 ? numbers.Wide(250) : numbers.Mantissa());
                im = numbers.Signed(numbers.Wide(round % 4 == 1 ? 4 : 250));
                if (round % 4 == 2) {  // near the odd multiples of pi/8, where an angle is folded
                    const double eighth = std::ldexp(std::acos(-1.0), -3);
                    im = re * std::tan(eighth * (2 * numbers.Below(8) + 1) + 1e-3 * (numbers.Mantissa() - 1.5));
                } else if (round % 4 == 3) {
                    im = numbers.Signed(numbers.Below(3) == 0 ? 0.0 : numbers.Mantissa());
                }
            },
            [](double re, double im, double argument) {
                const long double exact = std::atan2(static_cast<long double>(im), static_cast<long double>(re));
                return std::abs(static_cast<double>(static_cast<long double>(argument) - exact));
            });
        CheckCard("argument, radians", largest, f.argumentMaxError, 0.5);
    });
}

TEST_CASE("the argument on the negative axis is pi with the sign of the imaginary part, and nothing on the positive") {
    const double pi = std::acos(-1.0);
    const struct {
        double re, im, argument;
    } cases[] = {{-2.0, 0.0, pi},      {-2.0, -0.0, -pi},      {2.0, 0.0, 0.0},       {2.0, -0.0, -0.0},
                 {0.0, 3.0, pi / 2.0}, {0.0, -3.0, -pi / 2.0}, {-0.0, 3.0, pi / 2.0}, {1.0, 1.0, pi / 4.0}};
    ForEachInstructionSet([&] {
        for (const auto& c : cases) {
            CAPTURE(c.re);
            CAPTURE(c.im);
            Parts in;
            for (std::size_t n = 0; n < 4; ++n) {
                std::fill(in.values[n].begin(), in.values[n].end(), n % 2 == 0 ? c.re : c.im);
            }
            std::vector<double> first(kCount), second(kCount);
            Functions().arguments(in.Pointers(), 16, first.data(), second.data());
            CHECK(first[7] == c.argument);  // to the last bit: nothing is added to the constants
            CHECK(std::signbit(first[7]) == std::signbit(c.argument));
            CHECK(second[15] == first[7]);
        }
    });
}
