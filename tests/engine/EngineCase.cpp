#include "engine/EngineCase.h"

#include <cmath>

bool EngineCase::Run() {
    tidora::NodeFields fields;
    fields.layers = layers;
    for (std::size_t c = 0; c < tidora::kComponents; ++c) {
        out[c].assign(wanted[c] ? layers * Size() : 0, -77.0F);
        fields.of[c] = wanted[c] ? out[c].data() : nullptr;
    }
    const tidora::Nodes nodes = {isGrid,   x.size(), Rows(),
                                 x.data(), y.data(), topography.empty() ? nullptr : topography.data()};
    return tidora::DeformNodes(elements, shares.empty() ? nullptr : shares.data(), nodes, task, fields);
}

tidora::FAULT_PARAM ElementAt(double x, double y, double strike) {
    tidora::FAULT_PARAM e;
    e.org_x = x;
    e.org_y = y;
    e.baseOffset = 9000.0;
    e.depth = 7000.0;
    e.strike = strike;
    e.dip = 20.0;
    e.rake = 75.0;
    e.length = 60.0e3;
    e.width = 30.0e3;
    e.slip = 3.0;
    return e;
}

std::vector<double> Axis(double first, double step, std::size_t count) {
    std::vector<double> values;
    for (std::size_t i = 0; i < count; ++i) {
        values.push_back(first + step * static_cast<double>(i));
    }
    return values;
}

std::vector<float> WavyFloor(std::size_t columns, std::size_t rows) {
    std::vector<float> floor;
    for (std::size_t iy = 0; iy < rows; ++iy) {
        for (std::size_t ix = 0; ix < columns; ++ix) {
            const double wave = std::sin(0.11 * static_cast<double>(ix)) * std::cos(0.07 * static_cast<double>(iy));
            floor.push_back(static_cast<float>(-3100.0 + 2900.0 * wave));
        }
    }
    return floor;
}

EngineCase GlobeCase(double lon, double lat) {
    EngineCase c;
    for (int n = 0; n < 6; ++n) {
        c.elements.push_back(ElementAt(lon + 0.3 * n, lat + 0.2 * n, 30.0 + 25.0 * n));
    }
    c.x = Axis(lon - 4.0, 0.1, 83);
    c.y = Axis(lat - 3.0, 0.1, 61);
    c.topography = WavyFloor(c.x.size(), c.y.size());
    c.task.frame = tidora::NodeFrame::Globe;
    c.task.depth = tidora::DepthRule::Floor;
    c.task.spacing = 0.1F;
    c.task.threads = 1;
    c.wanted = {true, true, true, true};
    return c;
}
