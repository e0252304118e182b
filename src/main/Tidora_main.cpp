#include <iostream>
#include <string>

#include "config/ConfReader.h"
#include "main/RunMessages.h"
#include "main/RunSequence.h"

namespace {

constexpr const char* program = "Tidora";
constexpr const char* version = TIDORA_VERSION;  // of the file VERSION

void PrintBanner() {
    const std::string rule(45, '=');
    std::cout << rule << '\n' << "       " << program << " version " << version << '\n' << rule << std::endl;
}

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
