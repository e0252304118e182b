// Runs one case of the command-line tests: RunCase PROGRAM CASE-FILE SCRATCH-FOLDER. Exit status: 0 when the run was as
// the case says, 1 when it was not, 2 when the case could not be run.

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include <unistd.h>

#include "CaseFile.h"
#include "ChildProcess.h"
#include "Comparison.h"

namespace {

namespace fs = std::filesystem;

/// A folder for this case alone, until the end of its scope: the process number keeps it apart from the same case of
/// another test run.
class CaseFolder {
public:
    CaseFolder(const fs::path& root, const fs::path& caseFile)
        : m_path(fs::absolute(root) / (caseFile.stem().string() + "_" + std::to_string(getpid()))) {
        fs::remove_all(m_path);
        fs::create_directories(m_path / "work");
    }
    ~CaseFolder() {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    CaseFolder(const CaseFolder&) = delete;
    CaseFolder& operator=(const CaseFolder&) = delete;

    [[nodiscard]] fs::path operator/(const char* name) const { return m_path / name; }

private:
    fs::path m_path;
};

void WriteInputs(const CaseFile& testCase, const fs::path& folder) {
    for (const std::string& name : testCase.directories) {
        fs::create_directories(folder / name);
    }
    for (const auto& [name, bytes] : testCase.inputs) {
        fs::create_directories((folder / name).parent_path());
        std::ofstream file(folder / name, std::ios::binary);
        if (!file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush()) {
            throw std::runtime_error("cannot write " + name);
        }
    }
}

std::vector<std::string> RunCase(const std::string& program, const fs::path& caseFile, const fs::path& root) {
    const CaseFile testCase = ReadCaseFile(caseFile);
    const CaseFolder folder(root, caseFile);
    const fs::path work = folder / "work";
    WriteInputs(testCase, work);
    const ProcessResult result = RunProgram(fs::absolute(program), testCase.arguments, work.string(),
                                            (folder / "stdout").string(), (folder / "stderr").string());
    return DifferencesOf(testCase, result, work.string());
}

}  // namespace

int main(int argc, char* argv[]) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() != 3) {
        std::cerr << "usage: RunCase PROGRAM CASE-FILE SCRATCH-FOLDER\n";
        return 2;
    }
    try {
        const std::vector<std::string> differences = RunCase(arguments[0], arguments[1], arguments[2]);
        for (const std::string& difference : differences) {
            std::cout << difference << '\n';
        }
        return differences.empty() ? 0 : 1;
    } catch (const std::exception& error) {
        std::cerr << arguments[1] << ": " << error.what() << '\n';
        return 2;
    }
}
