// The rupture time function, and the intervals that a fault's elements make.

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <doctest/doctest.h>

#include "fault/DynamicParam.h"
#include "fault/Fault.h"

using tidora::DYNAMIC_PARAM;
using tidora::DynamicParam;
using tidora::Fault;
using tidora::FAULT_PARAM;
using tidora::InstantVal2d;

namespace {

const double kInf = std::numeric_limits<double>::infinity();
const double kNan = std::numeric_limits<double>::quiet_NaN();

DYNAMIC_PARAM Interval(double start, double length) {
    return {0, start, length, true};
}

DynamicParam Intervals(std::vector<DYNAMIC_PARAM> intervals) {
    DynamicParam dyn;
    dyn.params = std::move(intervals);
    return dyn;
}

FAULT_PARAM Element(double lagtime, double duration) {
    FAULT_PARAM element;
    element.lagtime = lagtime;
    element.duration = duration;
    return element;
}

struct Share {
    std::string why;
    double start;
    double length;
    double lagtime;
    double duration;
    float share;
};

const Share kShares[] = {
    // The static interval.
    {"the static interval takes a static element", 0, 0, 0, 0, 1.0F},
    {"the static interval takes an element with a lag time", 0, 0, 7, 3, 1.0F},
    {"the static interval takes an element that has finished", 0, 0, -9, 3, 1.0F},
    {"negative zero is zero", -0.0, 0, 7, 3, 1.0F},
    {"the static interval takes an element whose timing is no number", 0, 0, kNan, kNan, 1.0F},
    // Starts at or after the end of the interval.
    {"an element that starts at the end of an interval of no length", 5, 0, 5, 0, 0.0F},
    {"an element that starts at the end of the interval", 0, 5, 5, 10, 0.0F},
    {"an element that starts after the interval", 0, 5, 6, 10, 0.0F},
    // Has finished by the start of the interval.
    {"an element that finishes at the start of the interval", 10, 5, 2, 8, 0.0F},
    {"an element that finishes before the interval", 10, 5, 2, 3, 0.0F},
    {"an element of no duration before the interval", 10, 5, 2, 0, 0.0F},
    // The share of the slip within the interval.
    {"an element within the interval", 0, 10, 2, 4, 1.0F},
    {"an element that ends within the interval", 4, 10, 0, 8, 0.5F},
    {"an element that starts within the interval", 0, 4, 2, 8, 0.25F},
    {"an interval within the element's slip", 3, 2, 0, 8, 0.25F},
    {"an element that fills the interval exactly", 3, 8, 3, 8, 1.0F},
    {"an element of no duration within the interval", 0, 10, 4, 0, 1.0F},
    {"an element of no duration at the start of the interval", 4, 10, 4, 0, 1.0F},
    {"an interval of no length within the element's slip", 4, 0, 0, 8, 1.0F},
    {"an interval of no length at the end of the element's slip", 8, 0, 0, 8, 0.0F},
    {"an interval of no length at the start of the element's slip", 2, 0, 2, 8, 0.0F},
    {"times before 0", -10, 5, -8, 4, 0.75F},
    // Neither 0 nor 1 where the order of times is odd.
    {"an interval of negative length", 10, -4, 0, 20, 0.0F},
    {"an interval that ends at 0 but does not start there", -5, 5, -4, 2, 1.0F},
    {"an endless interval", 0, kInf, 5, 2, 1.0F},
};

InstantVal2d Snapshot(const std::vector<float>& values) {
    InstantVal2d snapshot;
    snapshot.Reset(values.size());
    for (std::size_t k = 0; k < values.size(); ++k) {
        snapshot.val[k] = values[k];
    }
    return snapshot;
}

std::vector<float> Values(const InstantVal2d& snapshot) {
    return {snapshot.val, snapshot.val + snapshot.num};
}

}  // namespace

TEST_CASE("the share of an element's slip that falls into an interval follows the rupture time function") {
    for (const Share& row : kShares) {
        CAPTURE(row.why);
        DynamicParam dyn = Intervals({Interval(row.start, row.length)});
        std::vector<InstantVal2d> out = {Snapshot({0.0F})};
        const float field = 1.0F;
        CHECK(dyn.CalcDynamicAct(1, 1, row.lagtime, row.duration, &field, out) == 1);
        CHECK(out[0].val[0] == row.share);
        CHECK(tidora::SlipShare(dyn.params[0], row.lagtime, row.duration) == row.share);
    }
}

TEST_CASE("the share is rounded to single precision before it is divided and again behind") {
    // hi - lo = 1/3 of a second of 0.7: once rounded and divided in double and rounded, not the rounded quotient.
    const double length = 1.0 / 3.0;
    const double duration = 0.7;
    const float expected = static_cast<float>(static_cast<double>(static_cast<float>(length)) / duration);
    CHECK(tidora::SlipShare(Interval(0.0, length), 0.0, duration) == expected);

    // An interval and a duration for which the order of roundings shows.
    int shows = 0;
    for (int k = 1; k < 200; ++k) {
        const double part = 0.01 * k;
        const float twice = static_cast<float>(static_cast<double>(static_cast<float>(part)) / 2.7);
        const float once = static_cast<float>(part / 2.7);
        CHECK(tidora::SlipShare(Interval(0.0, part), 0.0, 2.7) == twice);
        shows += twice == once ? 0 : 1;
    }
    CHECK(shows > 0);
}

TEST_CASE("the shares of consecutive intervals add up to the whole slip") {
    const double lagtime = 3.0;
    const double duration = 64.0;
    double sum = 0.0;
    for (int k = 0; k < 10; ++k) {
        sum += static_cast<double>(tidora::SlipShare(Interval(8.0 * k, 8.0), lagtime, duration));
    }
    CHECK(sum == 1.0);  // every share is a whole number of 64ths
}

TEST_CASE("the field is added with its share to every interval and point by point") {
    DynamicParam dyn = Intervals({Interval(0, 4), Interval(4, 4), Interval(100, 1)});
    std::vector<InstantVal2d> out = {Snapshot({1, 1, 1, 1, 1, 1}), Snapshot({0, 0, 0, 0, 0, 0}),
                                     Snapshot({5, 5, 5, 5, 5, 5})};
    const std::vector<float> field = {8, -16, 24, 0.5F, 0, 32};
    CHECK(dyn.CalcDynamicAct(2, 3, 3.0, 4.0, field.data(), out) == 1);
    CHECK(Values(out[0]) == std::vector<float>{3, -3, 7, 1.125F, 1, 9});
    CHECK(Values(out[1]) == std::vector<float>{6, -12, 18, 0.375F, 0, 24});
    CHECK(Values(out[2]) == std::vector<float>{5, 5, 5, 5, 5, 5});
    CHECK(field[1] == -16.0F);
}

TEST_CASE("a share times a value is rounded before it is added") {
    const double third = 1.0 / 3.0;
    const float share = static_cast<float>(third);
    DynamicParam dyn = Intervals({Interval(0.0, third)});
    int shows = 0;
    for (int k = 1; k < 200; ++k) {
        const float value = 0.37F * static_cast<float>(k);
        std::vector<InstantVal2d> out = {Snapshot({1.0F})};
        dyn.CalcDynamicAct(1, 1, 0.0, 1.0, &value, out);
        const volatile float product = share * value;  // stored: nothing may fuse it with the sum
        CHECK(out[0].val[0] == 1.0F + product);
        shows += std::fma(share, value, 1.0F) == 1.0F + product ? 0 : 1;
    }
    CHECK(shows > 0);  // some of the values tell the difference
}

TEST_CASE("an element that starts at the end of an interval of no length gives it nothing") {
    CHECK(tidora::SlipShare(Interval(5.0, 0.0), 5.0, 0.0) == 0.0F);
}

TEST_CASE("whether an interval is valid plays no part in the accumulation") {
    DynamicParam dyn = Intervals({Interval(0, 10)});
    dyn.params[0].isValid = false;
    std::vector<InstantVal2d> out = {Snapshot({0.0F})};
    const float field = 2.0F;
    CHECK(dyn.CalcDynamicAct(1, 1, 1.0, 1.0, &field, out) == 1);
    CHECK(out[0].val[0] == 2.0F);
}

TEST_CASE("no intervals add nothing and an empty grid is left alone") {
    const float field = 2.0F;
    std::vector<InstantVal2d> out = {Snapshot({7.0F})};
    const DynamicParam none;
    CHECK(none.CalcDynamicAct(1, 1, 0.0, 0.0, &field, out) == 1);
    CHECK(out[0].val[0] == 7.0F);

    DynamicParam dyn = Intervals({Interval(0, 0)});
    struct Size {
        int nx;
        int ny;
    };
    for (const Size& size : {Size{0, 1}, Size{1, 0}, Size{-1, -1}, Size{0, 0}}) {
        CAPTURE(size.nx);
        CHECK(dyn.CalcDynamicAct(size.nx, size.ny, 0.0, 0.0, &field, out) == 1);
        CHECK(out[0].val[0] == 7.0F);
    }
}

TEST_CASE("elements of the same lag time and duration make one interval in order of first appearance") {
    Fault fault;
    fault.elements = {Element(0, 10), Element(5, 10), Element(0, 10), Element(5, 20), Element(5, 10), Element(0, 0)};
    std::vector<DYNAMIC_PARAM> list;
    CHECK(fault.SetDynamicParam(list) == 1);
    REQUIRE(list.size() == 4);
    const double expected[4][2] = {{0, 10}, {5, 10}, {5, 20}, {0, 0}};
    for (int k = 0; k < 4; ++k) {
        CAPTURE(k);
        const DYNAMIC_PARAM& interval = list[static_cast<std::size_t>(k)];
        CHECK(interval.order == k);
        CHECK(interval.validTime == expected[k][0]);
        CHECK(interval.riseTime == expected[k][1]);
        CHECK(interval.isValid);
    }
}

TEST_CASE("intervals that a list already holds are found and offset the order of new ones") {
    Fault fault;
    fault.elements = {Element(1, 1), Element(2, 2)};
    std::vector<DYNAMIC_PARAM> list = {{40, 9, 9, false}, {41, 1, 1, false}};
    CHECK(fault.SetDynamicParam(list) == 1);
    REQUIRE(list.size() == 3);
    CHECK(list[1].order == 41);
    CHECK_FALSE(list[1].isValid);
    CHECK(list[2].order == 2);
    CHECK(list[2].validTime == 2.0);
    CHECK(list[2].isValid);
    CHECK(fault.SetDynamicParam(list) == 1);
    CHECK(list.size() == 3);
}

TEST_CASE("lag times are compared exactly and a NaN equals none") {
    Fault fault;
    fault.elements = {Element(1.0, 0),  Element(std::nextafter(1.0, 2.0), 0),
                      Element(0.0, 0),  Element(-0.0, 0),
                      Element(kNan, 0), Element(kNan, 0)};
    std::vector<DYNAMIC_PARAM> list;
    CHECK(fault.SetDynamicParam(list) == 1);
    CHECK(list.size() == 5);  // two near 1, one 0, and each NaN
}

TEST_CASE("a fault without elements adds no interval") {
    std::vector<DYNAMIC_PARAM> list;
    CHECK(Fault().SetDynamicParam(list) == 1);
    CHECK(list.empty());
}

TEST_CASE("a static element makes the static interval") {
    Fault fault;
    fault.elements = {Element(0, 0)};
    std::vector<DYNAMIC_PARAM> list;
    CHECK(fault.SetDynamicParam(list) == 1);
    REQUIRE(list.size() == 1);
    CHECK(list[0].validTime == 0.0);
    CHECK(list[0].riseTime == 0.0);
    CHECK(tidora::SlipShare(list[0], 0.0, 0.0) == 1.0F);
}

TEST_CASE("an element of lag time and no duration adds nothing to its own interval") {
    Fault fault;
    fault.elements = {Element(5, 0)};
    std::vector<DYNAMIC_PARAM> list;
    CHECK(fault.SetDynamicParam(list) == 1);
    CHECK(tidora::SlipShare(list[0], 5.0, 0.0) == 0.0F);
}

TEST_CASE("overlapping intervals of two elements count their slip twice") {
    // Element A slips over (0, 10) and B over (5, 15): each makes an interval, and half of each falls into the other's.
    Fault fault;
    fault.elements = {Element(0, 10), Element(5, 10)};
    DynamicParam dyn;
    CHECK(fault.SetDynamicParam(dyn.params) == 1);
    std::vector<InstantVal2d> out = {Snapshot({0.0F}), Snapshot({0.0F})};
    const float field = 1.0F;
    dyn.CalcDynamicAct(1, 1, 0.0, 10.0, &field, out);
    CHECK(out[0].val[0] == 1.0F);
    CHECK(out[1].val[0] == 0.5F);
}

TEST_CASE("an interval without a share receives nothing, also where the field is not a number") {
    DynamicParam intervals;
    intervals.params.push_back({0, 0.0, 10.0, true});
    intervals.params.push_back({1, 10.0, 10.0, true});
    std::vector<InstantVal2d> out(2);
    for (InstantVal2d& snapshot : out) {
        snapshot.Reset(2);
    }
    const float field[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()};
    CHECK(intervals.CalcDynamicAct(1, 2, 10.0, 5.0, field, out) == 1);
    CHECK(out[0].val[0] == 0.0F);
    CHECK(out[0].val[1] == 0.0F);
    CHECK(std::isnan(out[1].val[0]));
    CHECK(out[1].val[1] == std::numeric_limits<float>::infinity());
}
