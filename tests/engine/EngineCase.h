#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "deform/NodeDeformation.h"

/// Elements, nodes and what came out, with everything that the engine borrows.
struct EngineCase {
    std::vector<tidora::FAULT_PARAM> elements;
    std::vector<double> x, y;
    std::vector<float> topography;
    std::vector<float> shares;
    std::size_t layers = 1;
    bool isGrid = true;
    tidora::NodeTask task;
    std::array<bool, tidora::kComponents> wanted = {true, true, true, false};
    std::array<std::vector<float>, tidora::kComponents> out;

    [[nodiscard]] std::size_t Rows() const { return isGrid ? y.size() : 1; }
    [[nodiscard]] std::size_t Size() const { return x.size() * Rows(); }
    /// True unless the work was cancelled.
    bool Run();
};

/// An element of 60 km by 30 km that dips 20 degrees; its reference point lies at (x, y).
[[nodiscard]] tidora::FAULT_PARAM ElementAt(double x, double y, double strike = 30.0);

/// `count` numbers from `first` on, `step` apart.
[[nodiscard]] std::vector<double> Axis(double first, double step, std::size_t count);

/// A sea floor that waves between 200 and 6000 m of depth.
[[nodiscard]] std::vector<float> WavyFloor(std::size_t columns, std::size_t rows);

/// A geographic case with some elements about (lon, lat), all components and a wavy floor.
[[nodiscard]] EngineCase GlobeCase(double lon, double lat);
