#include "Scenes.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <random>
#include <streambuf>

namespace bench {
namespace {

using tidora::FAULT_PARAM;

/// Swallows the progress lines.
class Silence : public std::streambuf {
public:
    Silence() : m_out(std::cout.rdbuf(this)) {}
    ~Silence() override { std::cout.rdbuf(m_out); }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    int_type overflow(int_type character) override { return traits_type::not_eof(character); }
    std::streamsize xsputn(const char* /*text*/, std::streamsize count) override { return count; }

    std::streambuf* m_out;
};

FAULT_PARAM Element(double x, double y, double length, double width, double slip) {
    FAULT_PARAM element;
    element.org_x = x;
    element.org_y = y;
    element.baseOffset = 12000.0;
    element.depth = 8000.0;
    element.strike = 193.0;
    element.dip = 13.0;
    element.rake = 81.0;
    element.length = length;
    element.width = width;
    element.slip = slip;
    return element;
}

DeformScene EmptyScene(int nx, int ny, float dx, int coordType) {
    DeformScene scene;
    scene.arguments.nx = nx;
    scene.arguments.ny = ny;
    scene.arguments.dx = dx;
    scene.arguments.regionCoordType = coordType;
    scene.fault.coordType = coordType;
    std::mt19937 random(1);
    for (int at = 0; at < nx * ny; ++at) {
        scene.topo.push_back(std::uniform_real_distribution<float>(-6000.0F, -100.0F)(random));
    }
    return scene;
}

void Finish(DeformScene& scene) {
    scene.fault.SetDynamicParam(scene.intervals.params);
    scene.vertical.resize(scene.intervals.params.size());
    scene.horizontal.resize(scene.intervals.params.size());
}

}  // namespace

void DeformScene::Reset() {
    arguments.topo = topo.data();
    for (std::vector<tidora::InstantVal2d>* series : {&vertical, &horizontal}) {
        for (tidora::InstantVal2d& snapshot : *series) {
            snapshot.Reset(topo.size());
        }
    }
}

void DeformScene::RunFast() {
    const Silence silence;
    const auto& a = arguments;
    fault.Deform2D(a.mu, a.lambda, a.horzMinDepth, a.tolerance, a.horizontalEffect, a.regionCoordType, a.nx, a.ny,
                   a.orgX, a.orgY, a.dx, a.topo, vertical, horizontal, intervals);
}

void DeformScene::RunLiteral() {
    const Silence silence;
    tidora::reference::DeformReference(fault, arguments, intervals, vertical, horizontal);
}

DeformScene PlaneScene(int n, std::size_t elements) {
    DeformScene scene = EmptyScene(n, n, 2000.0F, 0);
    scene.arguments.horizontalEffect = 1;
    const double middle = 1000.0 * n;
    for (std::size_t i = 0; i < elements; ++i) {
        const std::size_t rowNumber = i / 3;
        const auto row = static_cast<double>(rowNumber);
        const auto column = static_cast<double>(i % 3);
        scene.fault.elements.push_back(
            Element(middle + 25e3 * column, middle + 1e5 - 50e3 * row, 50e3, 25e3, 3.0 + row));
    }
    Finish(scene);
    return scene;
}

DeformScene GeographicScene(int nx, int ny, std::size_t elements) {
    DeformScene scene = EmptyScene(nx, ny, 1.0F / 30.0F, 1);
    scene.arguments.orgX = 135.0;
    scene.arguments.orgY = 32.0;
    for (std::size_t i = 0; i < elements; ++i) {
        const auto at = static_cast<double>(i) / static_cast<double>(elements);
        scene.fault.elements.push_back(Element(141.2 + 2.0 * at, 35.0 + 5.0 * at, 50e3, 25e3, 5.0));
    }
    Finish(scene);
    return scene;
}

DeformScene SmallElementsScene(int n) {
    DeformScene scene = EmptyScene(n, n, 1000.0F, 0);
    scene.arguments.tolerance = 0.5;
    scene.arguments.orgX = -500.0 * n;
    scene.arguments.orgY = -500.0 * n;
    std::mt19937 random(2);
    std::uniform_real_distribution<double> within(-50e3, 50e3);
    for (int i = 0; i < 200; ++i) {
        const double x = within(random);
        scene.fault.elements.push_back(Element(x, within(random), 2e3, 2e3, 1.0));
    }
    Finish(scene);
    return scene;
}

DeformScene FarPointsScene(int n, bool isGeographic, bool withSlopes, double tolerance) {
    const float spacing = isGeographic ? 1.0F / 90.0F : 1000.0F;
    DeformScene scene = EmptyScene(n, n, spacing, isGeographic ? 1 : 0);
    scene.arguments.tolerance = tolerance;
    scene.arguments.horizontalEffect = withSlopes ? 1 : 0;
    const double halfExtent = static_cast<double>(spacing) * n / 2.0;
    const double middleX = isGeographic ? 142.0 : 0.0, middleY = isGeographic ? 38.0 : 0.0;
    scene.arguments.orgX = middleX - halfExtent;
    scene.arguments.orgY = middleY - halfExtent;
    const double perMetre = isGeographic ? 1.0e-5 : 1.0;  // about, of either co-ordinate
    for (int i = 0; i < 100; ++i) {
        const int column = i % 10;
        const int row = i / 10;
        const double x = middleX + 10e3 * (column - 5) * perMetre;
        scene.fault.elements.push_back(Element(x, middleY + 10e3 * (row - 5) * perMetre, 10e3, 10e3, 1.0));
    }
    Finish(scene);
    return scene;
}

DeformScene IntervalScene(int n, std::size_t elements, std::size_t intervals) {
    DeformScene scene = PlaneScene(n, elements);
    for (std::size_t i = 0; i < elements; ++i) {
        scene.fault.elements[i].lagtime = 30.0 * static_cast<double>(i % intervals);
    }
    scene.intervals.params.clear();
    Finish(scene);
    return scene;
}

double LargestDifference(const DeformScene& a, const DeformScene& b) {
    double difference = 0.0, scale = 0.0;
    const auto add = [&](const std::vector<tidora::InstantVal2d>& x, const std::vector<tidora::InstantVal2d>& y) {
        for (std::size_t k = 0; k < x.size(); ++k) {
            for (std::uint64_t at = 0; at < x[k].num; ++at) {
                difference = std::max(difference,
                                      std::abs(static_cast<double>(x[k].val[at]) - static_cast<double>(y[k].val[at])));
                scale = std::max(scale, std::abs(static_cast<double>(y[k].val[at])));
            }
        }
    };
    add(a.vertical, b.vertical);
    add(a.horizontal, b.horizontal);
    return difference / scale;
}

}  // namespace bench
