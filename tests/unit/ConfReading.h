#pragma once

#include <string>
#include <vector>

#include "config/ConfReader.h"

/// What reading a configuration leaves behind.
struct ConfReading {
    bool success = false;
    tidora::ConfReader conf;
    std::string out;  ///< standard output
    std::string err;  ///< standard error
};

/// Reads the configuration file at `path`.
[[nodiscard]] ConfReading ReadConfFile(const std::string& path);

/// Writes `text` to a configuration file and reads it.
[[nodiscard]] ConfReading ReadConf(const std::string& text);

/// Line pairs: a caption and the value, for every value.
[[nodiscard]] std::string Pairs(const std::vector<std::string>& values);

/// The ten values of the global block, different from each other and from every default.
[[nodiscard]] std::vector<std::string> GlobalValues();

/// The pairs of GlobalValues() and of `count`.
[[nodiscard]] std::string GlobalPairs(const std::string& count);

/// The pairs of a region block: a number, a name made of it, parent 4, kind 1, a topography file made of it.
[[nodiscard]] std::string RegionPairs(const std::string& no);

/// What is printed on standard output: the heading, and a line per value.
[[nodiscard]] std::string EchoOf(const tidora::ConfReader& conf, const std::vector<std::string>& values);

/// The block of a configuration that could not be read.
[[nodiscard]] std::string ConfErrorBlock();

inline constexpr const char* kFormatError = " *** Conf File Format Error *** \n";
