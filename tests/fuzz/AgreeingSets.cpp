#include "AgreeingSets.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <sstream>
#include <vector>

#include "fault/Fault.h"
#include "kajiura/KajiuraFilter.h"
#include "okada/DC3D.h"
#include "okada/batch/SurfaceBatch.h"
#include "simd/InstructionSet.h"

namespace {

using tidora::PointShearSource;
using tidora::RectangleSource;

/// Takes numbers from the input; zeros after its end.
class Bytes {
public:
    Bytes(const std::uint8_t* data, std::size_t size) : m_at(data), m_end(data + size) {}

    unsigned Byte() { return m_at == m_end ? 0U : *m_at++; }
    bool OneIn(unsigned count) { return Byte() % count == 1; }
    /// 65536 steps from low to high.
    double Between(double low, double high) {
        const unsigned first = Byte();
        return low + (high - low) * (first * 256 + Byte()) / 65535.0;
    }
    /// A length of either sign, of 10^low to 10^high.
    double Length(double low, double high) {
        const double size = std::pow(10.0, Between(low, high));
        return Byte() % 2 == 0 ? size : -size;
    }
    /// Any float there is.
    float Raw() {
        std::uint32_t bits = 0;
        for (int n = 0; n < 4; ++n) {
            bits = bits << 8U | Byte();
        }
        float value = 0.0F;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
    /// The value, or now and then any float.
    float OrRaw(double value) { return OneIn(64) ? Raw() : static_cast<float>(value); }
    [[nodiscard]] bool AreLeft() const { return m_at != m_end; }

private:
    const std::uint8_t* m_at;
    const std::uint8_t* m_end;
};

/// Runs body(name of the set) with every instruction set and leaves the best one in use.
template <typename Body>
void ForEachSet(Body body) {
    for (const tidora::InstructionSet set : tidora::AvailableInstructionSets()) {
        tidora::ForceInstructionSet(set);
        body(tidora::NameOf(set));
    }
}

// ---- dislocations ----

struct Points {
    std::vector<float> x, y, depth;
};
using Displacement = std::array<float, 3>;

float Dip(Bytes& in) {
    const float special[] = {90.0F, -90.0F, 89.99999F, 89.9999F, 0.0F, 180.0F, 45.0F, 1.0e-3F};
    const unsigned which = in.Byte() % 16;
    return which < 8 ? special[which] : in.OrRaw(in.Between(-180.0, 180.0));
}

/// Up to 40 points, many of them over the edges of a source, their extensions and its trace.
Points MakePoints(Bytes& in, const RectangleSource& s) {
    Points points;
    while (points.x.size() < 40 && (in.AreLeft() || points.x.empty())) {
        const unsigned kind = in.Byte() % 8;
        const float ends[] = {s.al1, s.al2, 0.0F};
        points.x.push_back(kind < 3 ? ends[kind] : in.OrRaw(in.Length(-7.0, 6.7)));
        points.y.push_back(kind == 3 ? 0.0F : in.OrRaw(in.Length(-7.0, 6.7)));
        points.depth.push_back(in.OneIn(4) ? 0.0F : in.OrRaw(std::abs(in.Length(-2.0, 5.0))));
    }
    return points;
}

RectangleSource MakeRectangle(Bytes& in) {
    RectangleSource s;
    s.alpha = in.OneIn(2) ? static_cast<float>(in.Between(0.5, 1.0)) : s.alpha;
    s.dip = Dip(in);
    s.al1 = in.OneIn(4) ? in.OrRaw(in.Between(-1e4, 0.0)) : 0.0F;
    s.al2 = in.OrRaw(std::abs(in.Length(1.0, 5.7)));
    s.aw1 = in.OrRaw(-std::abs(in.Length(1.0, 5.7)));
    s.aw2 = in.OneIn(4) ? in.OrRaw(in.Between(0.0, 1e4)) : 0.0F;
    s.strikeSlip = in.OneIn(4) ? 0.0F : in.OrRaw(in.Between(-10.0, 10.0));
    s.dipSlip = in.OneIn(4) ? 0.0F : in.OrRaw(in.Between(-10.0, 10.0));
    return s;
}

PointShearSource MakePointSource(Bytes& in) {
    PointShearSource s;
    s.dip = Dip(in);
    s.strikePotency = in.OneIn(4) ? 0.0F : in.OrRaw(in.Between(-1e9, 1e9));
    s.dipPotency = in.OneIn(4) ? 0.0F : in.OrRaw(in.Between(-1e9, 1e9));
    return s;
}

Displacement Scalar(const RectangleSource& s, float x, float y, float depth, int& status) {
    const float zero = 0.0F;
    Displacement u = {};
    float g[9];
    dc3d_(&s.alpha, &x, &y, &zero, &depth, &s.dip, &s.al1, &s.al2, &s.aw1, &s.aw2, &s.strikeSlip, &s.dipSlip, &zero,
          &u[0], &u[1], &u[2], g, g + 1, g + 2, g + 3, g + 4, g + 5, g + 6, g + 7, g + 8, &status);
    return u;
}
Displacement Scalar(const PointShearSource& s, float x, float y, float depth, int& status) {
    const float zero = 0.0F;
    Displacement u = {};
    float g[9];
    dc3d0_(&s.alpha, &x, &y, &zero, &depth, &s.dip, &s.strikePotency, &s.dipPotency, &zero, &zero, &u[0], &u[1], &u[2],
           g, g + 1, g + 2, g + 3, g + 4, g + 5, g + 6, g + 7, g + 8, &status);
    return u;
}
void Batch(const RectangleSource& s, const tidora::SurfacePoints& in, const tidora::SurfaceDisplacements& out) {
    tidora::FiniteSurfaceBatch(s, in, out);
}
void Batch(const PointShearSource& s, const tidora::SurfacePoints& in, const tidora::SurfaceDisplacements& out) {
    tidora::PointSurfaceBatch(s, in, out);
}
std::string TextOf(const RectangleSource& s) {
    std::ostringstream text;
    text << std::hexfloat << "rectangle " << s.alpha << ' ' << s.dip << ' ' << s.al1 << ' ' << s.al2 << ' ' << s.aw1
         << ' ' << s.aw2 << ' ' << s.strikeSlip << ' ' << s.dipSlip;
    return text.str();
}
std::string TextOf(const PointShearSource& s) {
    std::ostringstream text;
    text << std::hexfloat << "point source " << s.alpha << ' ' << s.dip << ' ' << s.strikePotency << ' '
         << s.dipPotency;
    return text.str();
}

std::int64_t Ordered(float value) {
    std::int32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits < 0 ? -std::int64_t{bits & 0x7fffffff} : std::int64_t{bits};
}

/// The card of the batch: one unit in the last place where a component is at least `smallest`.
bool Agrees(float batch, float scalar, int status, float smallest) {
    if (std::isnan(batch) || std::isnan(scalar)) {
        return std::isnan(batch) && std::isnan(scalar);
    }
    if (status != 0) {
        return batch == 0.0F;
    }
    return std::abs(scalar) < smallest || std::abs(Ordered(batch) - Ordered(scalar)) <= tidora::kSurfaceBatchMaxUlp;
}

/// The source with one kind of slip alone.
RectangleSource Only(int kind, RectangleSource s) {
    (kind == 0 ? s.dipSlip : s.strikeSlip) = 0.0F;
    return s;
}
PointShearSource Only(int kind, PointShearSource s) {
    (kind == 0 ? s.dipPotency : s.strikePotency) = 0.0F;
    return s;
}

/// Where both kinds of slip cancel at every point of a batch, its displacements are rounding: each kind alone is what
/// they are small against.
template <typename Source>
float LargestOfEitherSlip(const Source& source, const Points& points) {
    float largest = 0.0F;
    for (std::size_t i = 0; i < points.x.size(); ++i) {
        for (const int kind : {0, 1}) {
            int status = 0;
            for (const float u : Scalar(Only(kind, source), points.x[i], points.y[i], points.depth[i], status)) {
                largest = std::isfinite(u) ? std::max(largest, std::abs(u)) : largest;
            }
        }
    }
    return largest;
}

template <typename Source>
std::string CompareDislocations(const Source& source, const Points& points) {
    const std::size_t count = points.x.size();
    std::vector<Displacement> scalar;
    std::vector<int> status(count);
    for (std::size_t i = 0; i < count; ++i) {
        scalar.push_back(Scalar(source, points.x[i], points.y[i], points.depth[i], status[i]));
    }
    const float largest = LargestOfEitherSlip(source, points);
    std::ostringstream text;
    ForEachSet([&](const char* set) {
        std::vector<float> ux(count), uy(count), uz(count), uzAlone(count);
        const tidora::SurfacePoints in = {count, points.x.data(), points.y.data(), points.depth.data()};
        Batch(source, in, {ux.data(), uy.data(), uz.data()});
        Batch(source, in, {nullptr, nullptr, uzAlone.data()});
        for (std::size_t i = 0; i < count; ++i) {
            const float batch[] = {ux[i], uy[i], uz[i], uzAlone[i]};
            for (std::size_t n = 0; n < 4; ++n) {
                const float expected = scalar[i][std::min<std::size_t>(n, 2)];
                if (!Agrees(batch[n], expected, status[i], 1e-6F * largest)) {
                    text << TextOf(source) << " at " << std::hexfloat << points.x[i] << ' ' << points.y[i] << ' '
                         << points.depth[i] << ", component " << n << ", " << set << ": " << batch[n] << ", not "
                         << expected << " of up to " << largest << '\n';
                }
            }
        }
    });
    return text.str();
}

// ---- the deformation of a grid ----

/// Swallows what a deformation prints.
class Silence : public std::streambuf {
public:
    Silence() : m_out(std::cout.rdbuf(this)) {}
    ~Silence() override { std::cout.rdbuf(m_out); }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    int_type overflow(int_type character) override { return traits_type::not_eof(character); }
    std::streambuf* m_out;
};

struct Scene {
    bool isGeographic = false;
    int nx = 1, ny = 1, horizontalEffect = 1;
    double orgX = 0.0, orgY = 0.0, tolerance = 0.02;
    float dx = 1000.0F;
    std::vector<float> topography;
    tidora::Fault fault;
    tidora::DynamicParam intervals;
};

Scene MakeScene(Bytes& in) {
    Scene scene;
    scene.isGeographic = in.OneIn(16);
    scene.nx = 1 + static_cast<int>(in.Byte() % 12);
    scene.ny = 1 + static_cast<int>(in.Byte() % 24);
    scene.horizontalEffect = in.OneIn(3) ? 0 : 1;
    scene.orgX = scene.isGeographic ? in.Between(130.0, 179.0) : in.Between(-6e4, 0.0);
    scene.orgY = scene.isGeographic ? in.Between(-60.0, 60.0) : in.Between(-6e4, 0.0);
    scene.tolerance = in.OneIn(3) ? 0.0 : in.Between(0.0, 0.2);
    scene.dx = static_cast<float>(scene.isGeographic ? in.Between(0.02, 0.3) : in.Between(200.0, 9000.0));
    const double extent = static_cast<double>(scene.dx) * 12.0;
    const unsigned elements = 1 + in.Byte() % 3;
    scene.fault.coordType = scene.isGeographic ? 1 : 0;
    for (unsigned n = 0; n < elements; ++n) {
        tidora::FAULT_PARAM e;
        e.org_x = scene.orgX + in.Between(-0.2, 1.0) * extent;
        e.org_y = scene.orgY + in.Between(-0.2, 1.0) * extent;
        e.baseOffset = in.Between(0.0, 9000.0);
        e.depth = in.OneIn(4) ? 0.0 : in.Between(0.0, 2e4);
        e.strike = in.Between(-180.0, 360.0);
        e.dip = in.OneIn(4) ? 90.0 : in.Between(0.0, 90.0);
        e.rake = in.Between(-180.0, 180.0);
        e.length = in.Between(3e3, 5e4);
        e.width = in.Between(3e3, 3e4);
        e.slip = in.OneIn(8) ? 0.0 : in.Between(-2.0, 5.0);
        e.lagtime = in.OneIn(2) ? in.Between(0.0, 60.0) : 0.0;
        e.duration = in.OneIn(2) ? in.Between(0.0, 60.0) : 0.0;
        scene.fault.elements.push_back(e);
    }
    for (int at = 0; at < scene.nx * scene.ny; ++at) {
        scene.topography.push_back(in.OrRaw(in.Between(-6000.0, 500.0)));
    }
    scene.fault.SetDynamicParam(scene.intervals.params);
    return scene;
}

std::vector<float> Deform(Scene scene) {
    std::vector<tidora::InstantVal2d> snapshots[2];
    for (std::vector<tidora::InstantVal2d>& series : snapshots) {
        series.resize(scene.intervals.params.size());
        for (tidora::InstantVal2d& snapshot : series) {
            snapshot.Reset(scene.topography.size());
        }
    }
    const Silence silence;
    if (scene.fault.Deform2D(3e10F, 3e10F, 0.0F, scene.tolerance, scene.horizontalEffect, scene.isGeographic ? 1 : 0,
                             scene.nx, scene.ny, scene.orgX, scene.orgY, scene.dx, scene.topography.data(),
                             snapshots[0], snapshots[1], scene.intervals) != 1) {
        return {};
    }
    std::vector<float> values;
    for (const std::vector<tidora::InstantVal2d>& series : snapshots) {
        for (const tidora::InstantVal2d& snapshot : series) {
            values.insert(values.end(), snapshot.val, snapshot.val + snapshot.num);
        }
    }
    return values;
}

std::string CompareDeformations(const Scene& scene) {
    std::vector<float> first;
    std::ostringstream text;
    ForEachSet([&](const char* set) {
        const std::vector<float> values = Deform(scene);
        if (tidora::CurrentInstructionSet() == tidora::AvailableInstructionSets().front()) {
            first = values;
            return;
        }
        double difference = values.size() == first.size() ? 0.0 : HUGE_VAL, scale = 0.0;
        for (std::size_t i = 0; i < std::min(values.size(), first.size()); ++i) {
            const auto a = static_cast<double>(values[i]), b = static_cast<double>(first[i]);
            if (std::isfinite(a) && std::isfinite(b)) {
                difference = std::max(difference, std::abs(a - b));
                scale = std::max(scale, std::abs(b));
            } else if (!(a == b || (std::isnan(a) && std::isnan(b)))) {
                difference = HUGE_VAL;
            }
        }
        if (difference > 2.0 * scale * 0x1p-23) {
            text << "deformation with " << set << ": off by " << difference << " of " << scale << '\n';
        }
    });
    return text.str();
}

// ---- the filter ----

std::string CompareFilters(Bytes& in) {
    std::vector<float> uplift, topography, parentUplift;
    tidora::SampledGrid grid, parent;
    grid.shape.nx = 1 + static_cast<int>(in.Byte() % 8);
    grid.shape.ny = 1 + static_cast<int>(in.Byte() % 8);
    grid.shape.dx = static_cast<float>(in.Between(100.0, 5000.0));
    grid.shape.orgX = in.Between(-1e4, 1e4);
    grid.shape.orgY = in.Between(-1e4, 1e4);
    parent.shape.nx = 2 + static_cast<int>(in.Byte() % 5);
    parent.shape.ny = 2 + static_cast<int>(in.Byte() % 5);
    parent.shape.dx = 3.0F * grid.shape.dx;
    parent.shape.orgX = grid.shape.orgX - in.Between(-2e4, 2e4);
    parent.shape.orgY = grid.shape.orgY - in.Between(-2e4, 2e4);
    const bool hasParent = in.OneIn(2);
    for (int at = 0; at < grid.shape.nx * grid.shape.ny; ++at) {
        uplift.push_back(in.OrRaw(in.Between(-3.0, 3.0)));
        topography.push_back(in.OneIn(4) ? in.OrRaw(in.Between(-30.0, 10.0)) : in.OrRaw(in.Between(-8000.0, 0.0)));
    }
    for (int at = 0; at < parent.shape.nx * parent.shape.ny; ++at) {
        parentUplift.push_back(in.OrRaw(in.Between(-3.0, 3.0)));
    }
    grid.values = uplift.data();
    parent.values = parentUplift.data();
    std::vector<float> first;
    std::ostringstream text;
    ForEachSet([&](const char* set) {
        std::vector<float> result = uplift;
        tidora::FilterUplift(grid, hasParent ? &parent : nullptr, topography.data(), result.data());
        first = first.empty() ? result : first;
        for (std::size_t i = 0; i < result.size(); ++i) {
            if (std::memcmp(&result[i], &first[i], sizeof result[i]) != 0 &&
                !(std::isnan(result[i]) && std::isnan(first[i]))) {
                text << "filter with " << set << " at " << i << std::hexfloat << ": " << result[i] << ", not "
                     << first[i] << '\n';
            }
        }
    });
    return text.str();
}

}  // namespace

std::string DisagreementOn(const std::uint8_t* data, std::size_t size) {
    Bytes in(data, size);
    switch (in.Byte() % 8) {
        case 0:
            return CompareFilters(in);
        case 1:
        case 2:
            return CompareDeformations(MakeScene(in));
        case 3: {
            const PointShearSource source = MakePointSource(in);
            return CompareDislocations(source, MakePoints(in, RectangleSource()));
        }
        default: {
            const RectangleSource source = MakeRectangle(in);
            return CompareDislocations(source, MakePoints(in, source));
        }
    }
}
