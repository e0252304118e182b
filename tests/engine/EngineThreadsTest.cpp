// What the bits of the engine do not depend on, and how its work is ended.

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <doctest/doctest.h>

#include "deform/SlipShares.h"
#include "engine/EngineCase.h"
#include "parity/EveryInstructionSet.h"

namespace {

void CheckSameBytes(const EngineCase& a, const EngineCase& b) {
    for (std::size_t c = 0; c < tidora::kComponents; ++c) {
        REQUIRE(a.out[c].size() == b.out[c].size());
        CHECK(std::memcmp(a.out[c].data(), b.out[c].data(), a.out[c].size() * sizeof(float)) == 0);
    }
}

/// Columns and rows of a case, cut out.
EngineCase Cut(const EngineCase& whole, std::size_t firstColumn, std::size_t columns, std::size_t firstRow,
               std::size_t rows) {
    EngineCase part = whole;
    part.x.assign(whole.x.begin() + static_cast<std::ptrdiff_t>(firstColumn),
                  whole.x.begin() + static_cast<std::ptrdiff_t>(firstColumn + columns));
    part.y.assign(whole.y.begin() + static_cast<std::ptrdiff_t>(firstRow),
                  whole.y.begin() + static_cast<std::ptrdiff_t>(firstRow + rows));
    part.topography.clear();
    for (std::size_t iy = firstRow; iy < firstRow + rows; ++iy) {
        for (std::size_t ix = firstColumn; ix < firstColumn + columns; ++ix) {
            part.topography.push_back(whole.topography[iy * whole.x.size() + ix]);
        }
    }
    return part;
}

/// The nodes of a grid as points without order.
EngineCase Scattered(const EngineCase& grid) {
    EngineCase points = grid;
    points.isGrid = false;
    points.x.clear();
    points.y.clear();
    points.topography.clear();
    for (std::size_t n = 0; n < grid.Size(); ++n) {
        const std::size_t at = n * 1009 % grid.Size();  // 1009 is prime and does not divide the size
        points.x.push_back(grid.x[at % grid.x.size()]);
        points.y.push_back(grid.y[at / grid.x.size()]);
        points.topography.push_back(grid.topography[at]);
    }
    return points;
}

}  // namespace

TEST_CASE("the bits do not depend on the number of threads") {
    ForEachInstructionSet([] {
        for (const tidora::NodeFrame frame : {tidora::NodeFrame::Globe, tidora::NodeFrame::Utm}) {
            EngineCase one = GlobeCase(179.0, -17.0);
            one.elements.pop_back();  // the others lie on this side of the date line, where zones are
            one.elements.resize(3);
            one.task.frame = frame;
            one.task.tolerance = 0.001;
            CHECK(one.Run());
            for (const int threads : {2, 3, 8}) {
                EngineCase many = one;
                many.task.threads = threads;
                CHECK(many.Run());
                CheckSameBytes(one, many);
            }
        }
    });
}

TEST_CASE("the bits of a node do not depend on how a grid is cut") {
    for (const tidora::NodeFrame frame : {tidora::NodeFrame::Globe, tidora::NodeFrame::Utm}) {
        EngineCase whole = GlobeCase(142.0, 38.0);
        whole.task.frame = frame;
        whole.task.tolerance = 0.002;
        whole.wanted = {true, true, true, false};  // slopes at the edge of a part are one-sided
        CHECK(whole.Run());
        for (const std::size_t columns : {1U, 7U, 40U}) {
            for (const std::size_t rows : {1U, 13U, 30U}) {
                EngineCase part = Cut(whole, 11, columns, 5, rows);
                CHECK(part.Run());
                for (std::size_t c = 0; c < 3; ++c) {
                    for (std::size_t n = 0; n < part.Size(); ++n) {
                        const std::size_t at = (5 + n / columns) * whole.x.size() + 11 + n % columns;
                        REQUIRE(part.out[c][n] == whole.out[c][at]);
                    }
                }
            }
        }
    }
}

TEST_CASE("scattered nodes have the bits of the nodes of a grid, in every frame") {
    ForEachInstructionSet([] {
        for (const tidora::NodeFrame frame :
             {tidora::NodeFrame::Globe, tidora::NodeFrame::Utm, tidora::NodeFrame::Plane}) {
            EngineCase grid = GlobeCase(142.0, 38.0);
            grid.task.frame = frame;
            grid.wanted = {true, true, true, false};
            EngineCase points = Scattered(grid);
            CHECK(grid.Run());
            CHECK(points.Run());
            for (std::size_t c = 0; c < 3; ++c) {
                for (std::size_t n = 0; n < points.Size(); ++n) {
                    REQUIRE(points.out[c][n] == grid.out[c][n * 1009 % grid.Size()]);
                }
            }
        }
    });
}

TEST_CASE("several callers at once get what one gets") {
    EngineCase one = GlobeCase(20.0, 60.0);
    CHECK(one.Run());
    std::vector<EngineCase> cases(8, one);
    std::vector<std::thread> callers;
    for (EngineCase& each : cases) {
        each.task.threads = 2;
        callers.emplace_back([&each] { each.Run(); });
    }
    for (std::thread& caller : callers) {
        caller.join();
    }
    for (const EngineCase& each : cases) {
        CheckSameBytes(one, each);
    }
}

TEST_CASE("the callback is asked by the caller's thread with a fraction that never falls") {
    EngineCase c = GlobeCase(142.0, 38.0);
    for (int n = 0; n < 200; ++n) {
        c.elements.push_back(c.elements[0]);
    }
    c.task.threads = 2;
    double last = -1.0;
    int calls = 0;
    bool isOwn = true, isRising = true;
    const std::thread::id own = std::this_thread::get_id();
    c.task.progress = [&](double fraction) {
        isOwn = isOwn && std::this_thread::get_id() == own;
        isRising = isRising && fraction >= last && fraction <= 1.0;
        last = fraction;
        ++calls;
        return false;
    };
    CHECK(c.Run());
    CHECK(calls > 0);
    CHECK(isOwn);
    CHECK(isRising);
}

TEST_CASE("the callback ends the work within a second, whatever a tile costs") {
    using Clock = std::chrono::steady_clock;
    EngineCase c = GlobeCase(142.0, 38.0);
    c.elements.resize(200000, c.elements[0]);
    for (const int threads : {1, 2}) {
        c.task.threads = threads;
        Clock::time_point asked;
        c.task.progress = [&asked](double) {
            asked = Clock::now();
            return true;
        };
        CHECK_FALSE(c.Run());
        CHECK(std::chrono::duration<double>(Clock::now() - asked).count() < 1.0);
    }
}

TEST_CASE("what the callback throws comes out of the call, and nothing is left running") {
    EngineCase c = GlobeCase(142.0, 38.0);
    c.task.threads = 3;
    c.task.progress = [](double) -> bool { throw std::runtime_error("enough"); };
    CHECK_THROWS_WITH_AS(c.Run(), "enough", std::runtime_error);
    c.task.progress = {};
    CHECK(c.Run());
}

TEST_CASE("the number of threads is what was asked for, or OMP_NUM_THREADS, or the processors") {
    const char* const before = std::getenv("OMP_NUM_THREADS");
    const std::string kept = before == nullptr ? "" : before;
    CHECK(tidora::ThreadCount(3) == 3);
    setenv("OMP_NUM_THREADS", "5,2", 1);
    CHECK(tidora::ThreadCount(0) == 5);
    CHECK(tidora::ThreadCount(2) == 2);
    setenv("OMP_NUM_THREADS", "many", 1);
    CHECK(tidora::ThreadCount(0) >= 1);
    unsetenv("OMP_NUM_THREADS");
    CHECK(tidora::ThreadCount(0) >= 1);
    if (before != nullptr) {
        setenv("OMP_NUM_THREADS", kept.c_str(), 1);
    }
}

TEST_CASE("no elements, or none that slips, displace nothing, and no nodes are no work") {
    EngineCase c = GlobeCase(142.0, 38.0);
    c.elements[0].slip = 0.0;
    c.elements.resize(1);
    CHECK(c.Run());
    for (const float value : c.out[tidora::kUplift]) {
        REQUIRE(value == 0.0F);
    }
    c.elements.clear();
    CHECK(c.Run());
    CHECK(c.out[tidora::kUplift][0] == 0.0F);
    c.x.clear();
    CHECK(c.Run());
}

TEST_CASE("windows of time share an element out without a rest") {
    const double limits[] = {0.0, 10.0, 20.0, 60.0};
    float shares[3];
    for (const tidora::SlipTimes times :
         {tidora::SlipTimes{5.0, 10.0}, {-20.0, 5.0}, {100.0, 7.0}, {0.0, 0.0}, {10.0, 0.0}, {-5.0, 100.0}}) {
        tidora::ShareOutToWindows(limits, 3, times, shares, 1);
        CHECK(shares[0] + shares[1] + shares[2] == doctest::Approx(1.0));
    }
    tidora::ShareOutToWindows(limits, 3, {5.0, 10.0}, shares, 1);
    CHECK(shares[0] == 0.5F);
    CHECK(shares[1] == 0.5F);
    tidora::ShareOutToWindows(limits, 3, {10.0, 0.0}, shares, 1);  // at once, in the window that begins with it
    CHECK(shares[1] == 1.0F);
    tidora::ShareOutToWindows(limits, 3, {-20.0, 5.0}, shares, 1);
    CHECK(shares[0] == 1.0F);
    tidora::ShareOutToWindows(limits, 3, {100.0, 7.0}, shares, 1);
    CHECK(shares[2] == 1.0F);
}
