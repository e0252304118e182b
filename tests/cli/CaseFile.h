#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "TypedValues.h"

/// One case: what the program finds, and what it must leave. README.md has the form of the file.
struct CaseFile {
    std::vector<std::string> arguments;
    std::map<std::string, std::string> inputs;  ///< bytes by file name
    std::set<std::string> directories;          ///< that stand before the run and after it

    std::string status;
    std::string out;
    std::string err;
    std::map<std::string, std::string> outputs;                    ///< text by file name
    std::map<std::string, std::vector<TypedValue>> binaryOutputs;  ///< values by file name
    std::set<std::string> newDirectories;                          ///< that the run makes and leaves empty
};

/// Throws CaseError for a file that has not the form of a case.
[[nodiscard]] CaseFile ReadCaseFile(const std::string& path);
