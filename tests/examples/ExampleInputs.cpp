#include "ExampleInputs.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace {

/// The lines of a file that are no comments.
std::vector<std::string> DataLines(const std::string& path) {
    std::ifstream file(path);
    if (!file) {
        throw std::runtime_error("cannot read " + path);
    }
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line.front() != '#') {
            lines.push_back(line);
        }
    }
    return lines;
}

}  // namespace

InputGrid ReadInputGrid(const std::string& path) {
    std::string text;
    for (const std::string& line : DataLines(path)) {
        text += line + "\n";
    }
    std::istringstream tokens(text);
    InputGrid grid;
    double endX = 0.0, endY = 0.0;
    tokens >> grid.nx >> grid.ny >> grid.orgX >> grid.orgY >> endX >> endY;
    if (!tokens || grid.nx < 2 || grid.ny < 2) {
        throw std::runtime_error(path + " has no header");
    }
    grid.dx = (endX - grid.orgX) / (grid.nx - 1);
    for (double value = 0.0; tokens >> value;) {
        grid.values.push_back(value);
    }
    if (grid.values.size() != static_cast<std::size_t>(grid.nx) * static_cast<std::size_t>(grid.ny)) {
        throw std::runtime_error(path + " has not nx * ny values");
    }
    return grid;
}

std::vector<Subfault> ReadSubfaults(const std::string& path) {
    std::vector<Subfault> subfaults;
    for (const std::string& line : DataLines(path)) {
        std::istringstream tokens(line);
        Subfault s;
        tokens >> s.y >> s.x >> s.baseOffset >> s.depth >> s.strike >> s.dip >> s.rake >> s.length >> s.width >> s.slip;
        if (!tokens) {
            throw std::runtime_error(path + " has a line of fewer than 10 columns");
        }
        std::string ignored;
        if (tokens >> ignored) {
            tokens >> s.lagtime >> s.duration;
        }
        subfaults.push_back(s);
    }
    return subfaults;
}

std::vector<Subfault> MergedByPlace(const std::vector<Subfault>& windows) {
    std::vector<Subfault> merged;
    for (const Subfault& window : windows) {
        const auto same = std::find_if(merged.begin(), merged.end(),
                                       [&window](const Subfault& s) { return !(s.x != window.x || s.y != window.y); });
        if (same == merged.end()) {
            merged.push_back(window);
            merged.back().lagtime = 0.0;
            merged.back().duration = 0.0;
        } else {
            same->slip += window.slip;
        }
    }
    return merged;
}
