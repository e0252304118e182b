// The three blocks, field by field in their order, and the thresholds of the routines that fill them.

#include <doctest/doctest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <string>

#include "golden/LargestError.h"
#include "okada/DC3D.h"

namespace tidora::golden {
namespace {

static_assert(sizeof(TidoraBlockC0) == 12 * sizeof(double));
static_assert(sizeof(TidoraBlockC1) == 24 * sizeof(double));
static_assert(sizeof(TidoraBlockC2) == 24 * sizeof(double));

constexpr double kSentinel = 777.0;

/// The doubles of a block in their order.
template <std::size_t Count, typename Block>
std::array<double, Count> FieldsOf(const Block& block) {
    static_assert(sizeof(Block) == Count * sizeof(double));
    std::array<double, Count> fields{};
    std::memcpy(fields.data(), &block, sizeof(block));
    return fields;
}

template <typename Block>
void FillWithSentinel(Block& block) {
    std::array<double, sizeof(Block) / sizeof(double)> fields{};
    fields.fill(kSentinel);
    std::memcpy(&block, fields.data(), sizeof(block));
}

template <std::size_t Count>
void CheckFields(const std::string& what, const std::array<double, Count>& actual,
                 const std::array<double, Count>& expected) {
    LargestError error;
    for (std::size_t i = 0; i < Count; ++i) {
        const double size = std::max(std::abs(expected[i]), 1e-3);
        error.Add((actual[i] - expected[i]) / size, "field " + std::to_string(i));
    }
    // Of the field, or of 0.001 where it is smaller: a dozen roundings of 1e-16 of terms below 1.
    error.Report(what, 1e-12);
}

void SetDip(double dip, double alpha = 2.0 / 3.0) {
    dccon0_(&alpha, &dip);
}

TEST_CASE("dccon0_ fills the medium constants and the functions of the dip in their order") {
    FillWithSentinel(c0_);
    SetDip(30.0, 0.6);
    const double s = 0.5, c = std::sqrt(0.75);
    CheckFields<12>("c0_, alpha 0.6, dip 30", FieldsOf<12>(c0_),
                    {0.2, 0.3, 2.0 / 3.0, 0.4, 0.6, s, c, 0.25, 0.75, s * c, 2.0 * s * c, 0.5});
}

TEST_CASE("dccon0_ makes a dip exactly vertical where the cosine is below 1e-6, on either side") {
    struct Row {
        double dip, sine;
        bool isVertical;
    };
    for (const Row& row : {Row{90.0, 1.0, true}, Row{89.99999, 1.0, true}, Row{90.00005, 1.0, true},
                           Row{89.99993, 1.0, false}, Row{90.00007, 1.0, false}, Row{-90.0, -1.0, true},
                           Row{-89.99999, -1.0, true}, Row{-89.99993, -1.0, false}, Row{270.0, -1.0, true}}) {
        CAPTURE(row.dip);
        SetDip(row.dip);
        CHECK((c0_.CD == 0.0) == row.isVertical);
        CHECK((c0_.SD == row.sine) == row.isVertical);
        CHECK(c0_.SD == doctest::Approx(row.sine));
        CHECK(c0_.CDCD == c0_.CD * c0_.CD);
        CHECK(c0_.SDSD == c0_.SD * c0_.SD);
        CHECK(c0_.S2D == 2.0 * c0_.SDCD);
        CHECK(c0_.C2D == c0_.CDCD - c0_.SDSD);
    }
}

TEST_CASE("dccon1_ fills the geometry of a point source in its order") {
    for (const double dip : {0.0, 30.0, 90.0, -50.0}) {
        SetDip(dip);
        FillWithSentinel(c1_);
        double x = 0.7, y = -1.1, d = 1.3;
        const double sd = c0_.SD, cd = c0_.CD;
        const double p = y * cd + d * sd, q = y * sd - d * cd, s = p * sd + q * cd, t = p * cd - q * sd;
        const double R2 = x * x + y * y + d * d, R = std::sqrt(R2), R5 = R2 * R2 * R, qr = 3.0 * q / R5;
        const double uy = sd - 5.0 * y * q / R2, uz = cd + 5.0 * d * q / R2;
        dccon1_(&x, &y, &d);
        CheckFields<24>("c1_, dip " + std::to_string(dip), FieldsOf<24>(c1_),
                        {p,
                         q,
                         s,
                         t,
                         x * y,
                         x * x,
                         y * y,
                         d * d,
                         R,
                         R2,
                         R * R2,
                         R5,
                         qr,
                         5.0 * qr * x / R2,
                         1.0 - 3.0 * x * x / R2,
                         1.0 - 5.0 * x * x / R2,
                         1.0 - 3.0 * y * y / R2,
                         1.0 - 3.0 * d * d / R2,
                         uy,
                         s - 5.0 * y * p * q / R2,
                         uy + sd,
                         uz,
                         t + 5.0 * d * p * q / R2,
                         uz + cd});
    }
}

TEST_CASE("dccon1_ sets co-ordinates below 1e-6 to 0 in place and leaves larger ones") {
    SetDip(30.0);
    double x = 0.9e-6, y = -0.9e-6, d = 2.0;
    dccon1_(&x, &y, &d);
    CHECK(x == 0.0);
    CHECK(y == 0.0);
    CHECK(d == 2.0);
    CHECK(c1_.X2 == 0.0);
    x = 1.1e-6;
    y = -1.1e-6;
    d = 0.9e-6;
    dccon1_(&x, &y, &d);
    CHECK(x == 1.1e-6);
    CHECK(y == -1.1e-6);
    CHECK(d == 0.0);
}

TEST_CASE("dccon1_ at the source leaves the fields from R3 on as they were") {
    SetDip(30.0);
    FillWithSentinel(c1_);
    double x = 0.9e-6, y = 0.0, d = -0.9e-6;
    dccon1_(&x, &y, &d);
    const auto fields = FieldsOf<24>(c1_);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        CAPTURE(i);
        CHECK(fields[i] == (i < 10 ? 0.0 : kSentinel));
    }
}

/// What dccon2_ should leave, from the definitions. The flags: no terms with R + xi or R + eta in the denominator.
std::array<double, 24> ExpectedC2(double xi, double eta, double q, double sd, double cd, bool kxi, bool ket) {
    const double R2 = xi * xi + eta * eta + q * q, R = std::sqrt(R2), R3 = R * R2;
    const double y = eta * cd + q * sd, d = eta * sd - q * cd;
    const auto logarithm = [R](double s, bool flag) { return flag ? -std::log(R - s) : std::log(R + s); };
    const auto x11 = [R](double s, bool flag) { return flag ? 0.0 : 1.0 / (R * (R + s)); };
    const auto x32 = [R, R3](double s, bool flag) { return flag ? 0.0 : (2.0 * R + s) / (R3 * (R + s) * (R + s)); };
    const double X11 = x11(xi, kxi), X32 = x32(xi, kxi), Y11 = x11(eta, ket), Y32 = x32(eta, ket);
    return {xi * xi,
            eta * eta,
            q * q,
            R,
            R2,
            R3,
            R3 * R2,
            y,
            d,
            q == 0.0 ? 0.0 : std::atan(xi * eta / (q * R)),
            logarithm(xi, kxi),
            logarithm(eta, ket),
            X11,
            Y11,
            X32,
            Y32,
            sd / R - y * q / R3,
            cd / R + d * q / R3,
            d / R3 + xi * xi * Y32 * sd,
            y / R3 + xi * xi * Y32 * cd,
            2.0 * X11 * sd - y * q * X32,
            2.0 * X11 * cd + d * q * X32,
            d * q * X32 + xi * q * Y32 * sd,
            y * q * X32 + xi * q * Y32 * cd};
}

TEST_CASE("dccon2_ fills the geometry of a corner in its order, with the forms that the flags ask for") {
    struct Row {
        std::string why;
        double xi, eta, q;
        int kxi, ket;
    };
    for (const Row& row :
         {Row{"an ordinary corner", 0.7, 1.1, -0.9, 0, 0}, Row{"a corner behind", -0.7, -1.1, 0.9, 0, 0},
          Row{"on the plane: no arctangent", 0.7, -1.1, 0.0, 0, 0},
          Row{"on the negative extension along strike", -0.7, 0.0, 0.0, 1, 0},
          Row{"on the negative extension along dip", 0.0, -1.1, 0.0, 0, 1}, Row{"both flags", -0.7, -1.1, 0.2, 1, 1}}) {
        CAPTURE(row.why);
        FillWithSentinel(c2_);
        double xi = row.xi, eta = row.eta, q = row.q;
        const double sd = 0.6, cd = 0.8;
        dccon2_(&xi, &eta, &q, &sd, &cd, &row.kxi, &row.ket);
        CheckFields<24>("c2_, " + row.why, FieldsOf<24>(c2_),
                        ExpectedC2(row.xi, row.eta, row.q, sd, cd, row.kxi == 1, row.ket == 1));
    }
}

TEST_CASE("dccon2_ sets co-ordinates below 1e-6 to 0 in place and leaves larger ones") {
    const double sd = 0.6, cd = 0.8;
    const int off = 0;
    double xi = 0.9e-6, eta = -0.9e-6, q = 1.0;
    dccon2_(&xi, &eta, &q, &sd, &cd, &off, &off);
    CHECK(xi == 0.0);
    CHECK(eta == 0.0);
    CHECK(q == 1.0);
    CHECK(c2_.XI2 == 0.0);
    xi = 1.1e-6;
    eta = 1.1e-6;
    q = -0.9e-6;
    dccon2_(&xi, &eta, &q, &sd, &cd, &off, &off);
    CHECK(xi == 1.1e-6);
    CHECK(eta == 1.1e-6);
    CHECK(q == 0.0);
    CHECK(c2_.TT == 0.0);
}

TEST_CASE("dccon2_ at a corner leaves the fields from R3 on as they were") {
    FillWithSentinel(c2_);
    const double sd = 0.6, cd = 0.8;
    const int off = 0;
    double xi = 0.9e-6, eta = 0.0, q = -0.9e-6;
    dccon2_(&xi, &eta, &q, &sd, &cd, &off, &off);
    const auto fields = FieldsOf<24>(c2_);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        CAPTURE(i);
        CHECK(fields[i] == (i < 5 ? 0.0 : kSentinel));
    }
}

}  // namespace
}  // namespace tidora::golden
