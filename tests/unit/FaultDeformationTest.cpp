#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "deform/ElementSource.h"
#include "fault/Fault.h"
#include "okada/DC3D.h"
#include "unit/ExpectedText.h"
#include "unit/PrintedText.h"

namespace {

using tidora::DynamicParam;
using tidora::Fault;
using tidora::FAULT_PARAM;
using tidora::InstantVal2d;

constexpr float kPoisson = 2.0F / 3.0F;  ///< medium constant of lambda = mu

/// A plane grid 6 columns by 5 rows, 4 km apart, over a sea floor that slopes down to the east.
struct Scene {
    int nx = 6, ny = 5;
    double orgX = -8000.0, orgY = -6000.0;
    float dx = 4000.0F;
    double tolerance = 0.0;
    int horizontalEffect = 0;
    int regionCoordType = 0;
    std::vector<float> topo = std::vector<float>(30, -3000.0F);
    Fault fault;
    DynamicParam intervals;
    std::vector<InstantVal2d> vertical, horizontal;
    std::string out, err;

    [[nodiscard]] std::size_t Size() const { return static_cast<std::size_t>(nx * ny); }
    [[nodiscard]] std::size_t At(int ix, int iy) const { return static_cast<std::size_t>(ix * ny + iy); }

    int Deform() {
        fault.SetDynamicParam(intervals.params);
        vertical.resize(intervals.params.size());
        horizontal.resize(intervals.params.size());
        for (std::size_t k = 0; k < vertical.size(); ++k) {
            vertical[k].Reset(Size());
            horizontal[k].Reset(Size());
        }
        const PrintedText printed;
        const int result = fault.Deform2D(1.0F, 1.0F, 50.0F, tolerance, horizontalEffect, regionCoordType, nx, ny, orgX,
                                          orgY, dx, topo.data(), vertical, horizontal, intervals);
        out = printed.Out();
        err = printed.Err();
        return result;
    }
};

FAULT_PARAM Element() {
    FAULT_PARAM element;
    element.baseOffset = 5000.0;
    element.depth = 7000.0;
    element.strike = 30.0;
    element.dip = 25.0;
    element.rake = 80.0;
    element.length = 9000.0;
    element.width = 5000.0;
    element.slip = 2.0;
    return element;
}

/// Displacement in the frame of an element, m.
struct Motion {
    float ux = 0.0F, uy = 0.0F, uz = 0.0F;
};

/// The finite source straight from the dislocation routine, for an element whose reference point is the origin.
Motion Direct(const FAULT_PARAM& e, double x, double y, double depth) {
    const double rad = 3.14159265359 / 180.0;
    const auto sinTheta = static_cast<float>(std::sin((e.strike - 90.0) / 180.0 * 3.14159265359));
    const auto cosTheta = static_cast<float>(std::cos((e.strike - 90.0) / 180.0 * 3.14159265359));
    const auto dxp = static_cast<float>(x), dyp = static_cast<float>(y);
    const float along = cosTheta * dxp - sinTheta * dyp, left = sinTheta * dxp + cosTheta * dyp, zero = 0.0F;
    const auto d = static_cast<float>(depth), dip = static_cast<float>(e.dip), length = static_cast<float>(e.length);
    const auto lower = static_cast<float>(-e.width);
    const auto strikeSlip = static_cast<float>(e.slip * std::cos(e.rake * rad));
    const auto dipSlip = static_cast<float>(e.slip * std::sin(e.rake * rad));
    Motion u;
    float g[9];
    int status = 0;
    dc3d_(&kPoisson, &along, &left, &zero, &d, &dip, &zero, &length, &lower, &zero, &strikeSlip, &dipSlip, &zero, &u.ux,
          &u.uy, &u.uz, g, g + 1, g + 2, g + 3, g + 4, g + 5, g + 6, g + 7, g + 8, &status);
    return u;
}

const FAULT_PARAM kNoSlip = [] {
    FAULT_PARAM element = Element();
    element.slip = 0.0;
    return element;
}();

}  // namespace

TEST_CASE("a fault of one element uses its depth column") {
    Scene scene;
    scene.fault.elements = {Element()};
    REQUIRE(scene.Deform() == 1);
    // The angles are formed twice from the same rounded pi, so the arguments are the same bits.
    CHECK(static_cast<double>(scene.vertical[0].val[scene.At(3, 2)]) ==
          doctest::Approx(static_cast<double>(Direct(Element(), 4000.0, 2000.0, 7000.0).uz)).epsilon(1e-6));
}

TEST_CASE("in a fault of two elements the depth is the topography plus the base offset") {
    Scene scene;
    scene.fault.elements = {Element(), kNoSlip};  // an element without slip counts
    REQUIRE(scene.Deform() == 1);
    CHECK(static_cast<double>(scene.vertical[0].val[scene.At(3, 2)]) ==
          doctest::Approx(static_cast<double>(Direct(Element(), 4000.0, 2000.0, 2000.0).uz)).epsilon(1e-6));
}

TEST_CASE("the depth from the topography is never below 0") {
    Scene scene;
    scene.fault.elements = {Element(), kNoSlip};
    scene.topo.assign(scene.Size(), -6000.0F);  // 1000 m deeper than the base offset reaches
    REQUIRE(scene.Deform() == 1);
    CHECK(static_cast<double>(scene.vertical[0].val[scene.At(3, 2)]) ==
          doctest::Approx(static_cast<double>(Direct(Element(), 4000.0, 2000.0, 0.0).uz)).epsilon(1e-6));
}

TEST_CASE("the centroid depth of a point is that of the point evaluated before it") {
    Scene scene;
    scene.nx = 1;
    scene.ny = 2;
    scene.orgX = 60000.0;  // beyond the finite source's distance, within the point source's
    scene.orgY = 0.0;
    scene.tolerance = 0.002;
    scene.topo = {-3000.0F, -1000.0F};
    scene.fault.elements = {Element(), kNoSlip};
    REQUIRE(scene.Deform() == 1);
    // Moving the depth of the first point moves the second; moving that of the second does not.
    const float second = scene.vertical[0].val[1];
    CHECK(second != 0.0F);
    Scene other = scene;
    other.topo[1] = -500.0F;
    REQUIRE(other.Deform() == 1);
    CHECK(other.vertical[0].val[1] == second);
    other.topo[0] = -2000.0F;
    REQUIRE(other.Deform() == 1);
    CHECK(other.vertical[0].val[1] != second);
}

TEST_CASE("a tolerance of 0 gives finite sources within 3335847.8 m, nothing beyond, and no distance lines") {
    Scene scene;
    scene.nx = 3;
    scene.ny = 1;
    scene.dx = 1000.0F;
    FAULT_PARAM element = Element();
    element.strike = 90.0;  // x of the element runs east
    scene.fault.elements = {element};
    scene.topo.assign(3, -3000.0F);
    // The distance is taken from the centroid: half a length east, half a width's horizontal part to the right.
    const double reach = 3335847.8;
    scene.orgX = reach + element.length / 2.0 - 1000.0;
    scene.orgY = -std::cos(element.dip / 180.0 * 3.14159265359) * element.width / 2.0;
    REQUIRE(scene.Deform() == 1);
    CHECK(scene.vertical[0].val[0] != 0.0F);
    CHECK(scene.vertical[0].val[2] == 0.0F);
    CHECK_FALSE(Contains(scene.out, "distance[m]"));
}

TEST_CASE("tolerances up to 1e-5 count as 0 and larger ones print both distances") {
    for (const double tolerance : {0.0, 1e-6, 1e-5, 1.1e-5, 0.01}) {
        CAPTURE(tolerance);
        Scene scene;
        scene.tolerance = tolerance;
        scene.fault.elements = {Element()};
        REQUIRE(scene.Deform() == 1);
        const std::size_t lines = tolerance > 1e-5 ? 1 : 0;
        CHECK(CountOf(scene.out, " DC3D  distance[m] : ") == lines);
        CHECK(CountOf(scene.out, " DC3D0 distance[m] : ") == lines);
    }
}

TEST_CASE("the source distances follow their formulas") {
    const FAULT_PARAM e = Element();
    const auto source = tidora::MakeElementSource(e, kPoisson);
    const auto reach = tidora::MakeSourceReach(e, source, 0.01, 3);
    // Written out once more in double throughout; single precision keeps 6e-8 of a value.
    const double sd = std::sin(25.0 / 180.0 * 3.14159265359), cd = std::cos(25.0 / 180.0 * 3.14159265359);
    const double sr = std::sin(80.0 / 180.0 * 3.14159265359), cr = std::cos(80.0 / 180.0 * 3.14159265359);
    const double q = 2.0 / 6.283185307179586 * 3.0 / 0.01, k = 0.5;
    const double g1 = ((sd * sr * cd + sd * cr) * k + cr + sr) * 10.606601717798211;
    const double g0 = ((cd * k * sd + 1.0) * sr + cr * (k * sd + 1.0)) * 1.5;
    const double area = 9000.0 * 5000.0;
    const double finite = 0.5 * std::hypot(9000.0, 5000.0) + std::pow(g1 * q * area * area * 0.0625, 0.25);
    CHECK(reach.isSwitched);
    CHECK(static_cast<double>(reach.finite) == doctest::Approx(finite).epsilon(2e-7));
    CHECK(static_cast<double>(reach.point) == doctest::Approx(std::sqrt(g0 * q * area)).epsilon(2e-7));
}

TEST_CASE("negative slip with a tolerance uses the distances of its size") {
    FAULT_PARAM e = Element();
    const auto positive = tidora::MakeSourceReach(e, tidora::MakeElementSource(e, kPoisson), 0.01, 1);
    e.slip = -e.slip;
    const auto negative = tidora::MakeSourceReach(e, tidora::MakeElementSource(e, kPoisson), 0.01, 1);
    CHECK(positive.finite > 0.0F);
    CHECK(negative.finite == positive.finite);
    CHECK(negative.point == positive.point);
}

TEST_CASE("a negative tolerance fails and names the XML File") {
    Scene scene;
    scene.tolerance = -0.001;
    scene.fault.elements = {Element()};
    CHECK(scene.Deform() == 0);
    CHECK(scene.err == ErrorBlock("FAULT OBJECT METHOD",
                                  {"Abnormal action at Calculate Deformation.", "Can not calculate deformation.",
                                   "Particular attention should be given to \"XML File\"."}));
    CHECK(scene.out.empty());
}

TEST_CASE("a negative tolerance is not seen where no element slips") {
    Scene scene;
    scene.tolerance = -0.001;
    scene.fault.elements = {kNoSlip};
    CHECK(scene.Deform() == 1);
}

TEST_CASE("co-ordinate kinds that differ, or that nobody knows, deform nothing and still print the progress") {
    struct Kinds {
        int fault, region;
    };
    for (const Kinds& kinds : {Kinds{0, 1}, Kinds{1, 0}, Kinds{2, 2}, Kinds{-1, -1}}) {
        CAPTURE(kinds.fault);
        CAPTURE(kinds.region);
        Scene scene;
        scene.fault.coordType = kinds.fault;
        scene.regionCoordType = kinds.region;
        scene.fault.elements = {Element(), Element()};
        CHECK(scene.Deform() == 1);
        CHECK(scene.out ==
              "1/2 Completed  Max Value Each ELEM. : 0 Max Value Sum.: 0\n"
              "2/2 Completed  Max Value Each ELEM. : 0 Max Value Sum.: 0\n");
        CHECK(std::all_of(scene.vertical[0].val, scene.vertical[0].val + scene.Size(),
                          [](float v) { return v == 0.0F; }));
    }
}

TEST_CASE("the horizontal term acts only below minus 50 m and only when switched on") {
    Scene scene;
    for (int ix = 0; ix < scene.nx; ++ix) {
        for (int iy = 0; iy < scene.ny; ++iy) {
            scene.topo[scene.At(ix, iy)] =
                ix < 3 ? -50.0F - 0.5F * static_cast<float>(iy) : -400.0F * static_cast<float>(ix);
        }
    }
    scene.fault.elements = {Element()};
    scene.horizontalEffect = 1;
    REQUIRE(scene.Deform() == 1);
    CHECK(scene.horizontal[0].val[scene.At(1, 0)] == 0.0F);  // exactly -50
    CHECK(scene.horizontal[0].val[scene.At(1, 1)] != 0.0F);  // -50.5
    for (const int off : {0, 2, -1}) {
        Scene without = scene;
        without.horizontalEffect = off;
        REQUIRE(without.Deform() == 1);
        CHECK(without.horizontal[0].val[scene.At(1, 1)] == 0.0F);
        CHECK(without.vertical[0].val[scene.At(1, 1)] == scene.vertical[0].val[scene.At(1, 1)]);
    }
}

TEST_CASE("the horizontal term is the motion down the slope, one-sided at the edges of the grid") {
    Scene scene;
    for (int ix = 0; ix < scene.nx; ++ix) {
        for (int iy = 0; iy < scene.ny; ++iy) {
            // Curved along both axes, so that the three difference forms give three values.
            scene.topo[scene.At(ix, iy)] =
                -1000.0F - 10.0F * static_cast<float>(ix * ix) - 7.0F * static_cast<float>(iy * iy);
        }
    }
    scene.horizontalEffect = 1;
    FAULT_PARAM element = Element();
    element.strike = 90.0;  // the element's x runs east and its y north
    scene.fault.elements = {element};
    REQUIRE(scene.Deform() == 1);
    struct Place {
        int ix, iy;
        double gx, gy;  ///< slopes of -topography by hand: (10 ix^2)' and (7 iy^2)' as differences over 4 km
    };
    for (const Place& at : {Place{0, 0, 10.0, 7.0}, Place{2, 2, 40.0, 28.0}, Place{5, 4, 90.0, 49.0}}) {
        CAPTURE(at.ix);
        const double x = -8000.0 + 4000.0 * at.ix, y = -6000.0 + 4000.0 * at.iy;
        const auto u = Direct(element, x, y, 7000.0);
        const double expected = (static_cast<double>(u.ux) * at.gx + static_cast<double>(u.uy) * at.gy) / 4000.0;
        // Single precision of the sum of two products: a few parts in 1e7 of the larger one.
        const double scale =
            std::abs(static_cast<double>(u.ux) * at.gx / 4000.0) + std::abs(static_cast<double>(u.uy) * at.gy / 4000.0);
        CHECK(std::abs(static_cast<double>(scene.horizontal[0].val[scene.At(at.ix, at.iy)]) - expected) <=
              4e-7 * scale);
    }
}

TEST_CASE("along an axis of one point the slope is 0") {
    for (const bool oneColumn : {true, false}) {
        Scene scene;
        scene.nx = oneColumn ? 1 : 4;
        scene.ny = oneColumn ? 4 : 1;
        scene.horizontalEffect = 1;
        scene.topo = {-1000.0F, -1400.0F, -2000.0F, -2600.0F};
        FAULT_PARAM element = Element();
        element.strike = 90.0;
        scene.fault.elements = {element};
        REQUIRE(scene.Deform() == 1);
        const double x = oneColumn ? -8000.0 : -4000.0, y = oneColumn ? -2000.0 : -6000.0;
        const auto u = Direct(element, x, y, 7000.0);
        const double along = static_cast<double>(oneColumn ? u.uy : u.ux) * (1000.0 / 8000.0);
        CHECK(static_cast<double>(scene.horizontal[0].val[1]) == doctest::Approx(along).epsilon(1e-6));
    }
}

TEST_CASE("an element without slip adds nothing and prints the maxima of the one before it") {
    Scene scene;
    scene.fault.elements = {kNoSlip, Element(), kNoSlip};
    REQUIRE(scene.Deform() == 1);
    const std::string first = "1/3 Completed  Max Value Each ELEM. : 0 Max Value Sum.: 0\n";
    REQUIRE(StartsWith(scene.out, first));
    const std::size_t second = scene.out.find("2/3");
    const std::size_t third = scene.out.find("3/3");
    REQUIRE(second != std::string::npos);
    REQUIRE(third != std::string::npos);
    CHECK(scene.out.substr(second + 3, third - second - 3) == scene.out.substr(third + 3));
    CHECK_FALSE(Contains(scene.out.substr(second), "ELEM. : 0 "));

    Scene alone;
    alone.fault.elements = {Element(), kNoSlip, kNoSlip};  // as many elements, so the same depths
    REQUIRE(alone.Deform() == 1);
    CHECK(std::equal(alone.vertical[0].val, alone.vertical[0].val + alone.Size(), scene.vertical[0].val));
}

TEST_CASE("a dip of 90 degrees is snapped to cosine 0 and sine 1, one of -90 to sine -1") {
    FAULT_PARAM e = Element();
    e.dip = 90.0;
    CHECK(tidora::MakeElementSource(e, kPoisson).cosDip == 0.0);
    CHECK(tidora::MakeElementSource(e, kPoisson).sinDip == 1.0);
    e.dip = -90.0;
    CHECK(tidora::MakeElementSource(e, kPoisson).sinDip == -1.0);
    e.dip = 89.9995;  // cosine 8.7e-6: below the bound of 1e-5
    CHECK(tidora::MakeElementSource(e, kPoisson).cosDip == 0.0);
    e.dip = 89.9993;  // cosine 1.2e-5
    CHECK(tidora::MakeElementSource(e, kPoisson).cosDip > 0.0);
}

TEST_CASE("a fault without elements changes nothing and prints nothing") {
    Scene scene;
    CHECK(scene.Deform() == 1);
    CHECK(scene.out.empty());
    CHECK(scene.vertical.empty());
}

TEST_CASE("each interval receives the share of the element that slips within it") {
    Scene scene;
    FAULT_PARAM early = Element();
    early.lagtime = 0.0;
    early.duration = 40.0;
    FAULT_PARAM late = Element();
    late.lagtime = 20.0;
    late.duration = 10.0;
    late.slip = 1.0;
    scene.fault.elements = {early, late};
    REQUIRE(scene.Deform() == 1);
    REQUIRE(scene.intervals.params.size() == 2);
    const std::size_t at = scene.At(3, 2);
    // The interval of the late element counts a quarter of the early one's slip a second time, and that of the early
    // one counts the late one's: overlapping intervals do.
    const double unit = static_cast<double>(Direct(late, 4000.0, 2000.0, 2000.0).uz);
    CHECK(static_cast<double>(scene.vertical[0].val[at]) == doctest::Approx(2.0 * unit + unit).epsilon(1e-6));
    CHECK(static_cast<double>(scene.vertical[1].val[at]) == doctest::Approx(0.5 * unit + unit).epsilon(1e-6));
}

TEST_CASE("an element whose zone does not exist fails, and what came before it stays") {
    Scene scene;
    scene.fault.coordType = 1;
    scene.regionCoordType = 1;
    scene.orgX = 178.0;
    scene.orgY = 10.0;
    scene.dx = 0.1F;
    FAULT_PARAM good = Element();
    good.org_x = 178.2;
    good.org_y = 10.2;
    FAULT_PARAM bad = good;
    bad.org_x = 180.0;  // zone 61
    scene.fault.elements = {good, bad};
    CHECK(scene.Deform() == 0);
    CHECK(scene.err == ErrorBlock("FAULT OBJECT METHOD",
                                  {"Abnormal action at Calculate Deformation.", "Can not calculate deformation.",
                                   "Particular attention should be given to \"XML File\"."}));
    CHECK(Contains(scene.out, "Deformation Calc. UTM Zone:60\n"));
    CHECK(EndsWith(scene.out, "Deformation Calc. UTM Zone:61\n"));
    CHECK(std::any_of(scene.vertical[0].val, scene.vertical[0].val + scene.Size(), [](float v) { return v != 0.0F; }));
}

TEST_CASE("an element origin off the globe fails as a negative tolerance does") {
    Scene scene;
    scene.fault.coordType = 1;
    scene.regionCoordType = 1;
    scene.orgX = 140.0;
    scene.orgY = 38.0;
    scene.dx = 0.1F;
    FAULT_PARAM element = Element();
    element.org_x = 140.0;
    element.org_y = 120.0;
    scene.fault.elements = {element};
    CHECK(scene.Deform() == 0);
    CHECK(Contains(scene.err, "\"XML File\""));
}

TEST_CASE("a geographic fault prints its zone and the translation of its reference point") {
    Scene scene;
    scene.fault.coordType = 1;
    scene.regionCoordType = 1;
    scene.orgX = 140.8;
    scene.orgY = 37.9;
    scene.dx = 0.05F;
    FAULT_PARAM element = Element();
    element.org_x = 141.0;  // the central meridian of zone 54
    element.org_y = 0.0;
    scene.orgY = -0.1;
    scene.fault.elements = {element};
    REQUIRE(scene.Deform() == 1);
    CHECK(StartsWith(scene.out,
                     "Deformation Calc. UTM Zone:54\n"
                     " Fault base point Co-ordinates Translate    lon:141 lat:0     x:500000   y:0\n1/1 Completed "));
}
