#include <iostream>
#include <string>

#include "config/ConfReader.h"
#include "main/RunMessages.h"
#include "main/RunSequence.h"

namespace {

// The texts of the command line are fixed, the version of the banner, slips of spelling and trailing blanks included.
// Test: "without-an-argument-the-usage-text-is-printed".
constexpr const char* program = "Tidora";
constexpr const char* version = "1.0.938";  // not that of a release: docs/versioning.md

void PrintBanner() {
    const std::string rule(45, '=');  // as wide as the banner is
    std::cout << rule << '\n' << "       " << program << " version " << version << '\n' << rule << std::endl;
}

/// On standard output and with status 0, however wrong the arguments are: a script has to look at its own.
void PrintUsage() {
    std::cout << "\n"
                 "SYNOPSIS\n"
                 "    Usage: Tidora <Config filename> \n"
                 "\n"
                 "DESCRIPTION\n"
                 "    Tidora makes a Tsunami Initail Wave Height. \n"
                 "\n"
                 "EXAMPLES\n"
                 "    $./Tidora ./TdrConf_EXAMPLE.txt\n"
                 "\n"
                 "COPYRIGHT\n"
                 "    Copyright (C) 2026 The Tidora developers. All rights reserved.\n"
              << std::endl;
}

/// Reads the configuration and runs it; the grids are released before main() has its last word.
tidora::RunCode RunConfiguration(const char* path) {
    std::cout << "\n>>>>>>>>>>>>>>>>>> Parameter File Input:" << std::endl;
    tidora::ConfReader conf(path);
    if (!conf.readParam()) {
        return tidora::RunCode::Configuration;
    }
    std::cout << "<<<<<<<<<<<<<<<<<< Completed.(Parameter File Input)" << std::endl;
    tidora::RunSequence run(conf);
    return run.Run();
}

}  // namespace

/// Exit status 0 after success and also after the usage text; 1 after every error that is reported. Nothing is caught:
/// where memory ends, the C++ library ends the program. Test:
/// "with-two-arguments-the-usage-text-is-printed-and-nothing-is-read".
int main(int argc, char* argv[]) {
    PrintBanner();
    if (argc != 2) {
        PrintUsage();
        return 0;
    }
    const tidora::RunCode code = RunConfiguration(argv[1]);
    if (code != tidora::RunCode::Success) {
        tidora::ReportRunError(std::cerr, static_cast<int>(code));
        return 1;
    }
    std::cout << "\nSuccessful Completion. ( Tidora Done. )" << std::endl;
    return 0;
}
