#include "TextRun.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "grid/GridFile.h"
#include "support/TextLines.h"

namespace bench {
namespace {

constexpr int kSide = 1500;
constexpr int kPerLine = 500;

double ChildrenSeconds() {
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Runs a command in a folder, its output thrown away; processor time, s. A failing one ends the benchmark.
double ProcessSeconds(const std::string& folder, std::vector<std::string> words) {
    const double start = ChildrenSeconds();
    const pid_t process = fork();
    if (process == 0) {
        std::vector<char*> arguments;
        for (std::string& word : words) {
            arguments.push_back(word.data());
        }
        arguments.push_back(nullptr);
        if (chdir(folder.c_str()) == 0 && std::freopen("/dev/null", "w", stdout) != nullptr) {
            execvp(arguments[0], arguments.data());
        }
        _exit(127);
    }
    int status = 0;
    if (process < 0 || waitpid(process, &status, 0) != process || status != 0) {
        std::fprintf(stderr, "cannot run %s\n", words[0].c_str());
        std::exit(1);
    }
    return ChildrenSeconds() - start;
}

}  // namespace

TextRun::TextRun() {
    std::string folder = (std::filesystem::temp_directory_path() / "tidora-bench-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        throw std::runtime_error("cannot make a folder in " + std::filesystem::temp_directory_path().string());
    }
    m_folder = folder;
    m_grid = m_folder + "/topo.txt";
    std::ofstream grid(m_grid);
    grid << kSide << ' ' << kSide << "\n0 0 1499000 1499000\n";
    std::mt19937 random(1);
    std::uniform_real_distribution<double> depth(-6000.0, 100.0);
    std::array<char, 32> text{};
    for (int at = 0; at < kSide * kSide; ++at) {
        std::snprintf(text.data(), text.size(), "%.2f%c", depth(random), (at + 1) % kPerLine == 0 ? '\n' : ' ');
        grid << text.data();
    }
    std::ofstream(m_folder + "/fault.txt") << "0 0 0 1000 0 90 90 1000 500 0\n";
    std::ofstream configuration(m_folder + "/TdrConf.txt");
    for (const char* value :
         {"bench", "out", "0", "0", "0", "0", "fault.txt", "-1", "0", "1", "1", "1", "sea", "0", "0", "topo.txt"}) {
        configuration << "# value\n" << value << '\n';
    }
}

TextRun::~TextRun() {
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
}

std::vector<float> TextRun::ValuesByStrtod() const {
    const tidora::FileHandle file = tidora::OpenForReading(m_grid, "r");
    std::vector<char> line(8192);
    std::vector<float> values;
    values.reserve(std::size_t{kSide} * kSide);
    for (int number = 0; std::fgets(line.data(), static_cast<int>(line.size()), file.get()) != nullptr; ++number) {
        for (const char* token = std::strtok(line.data(), " \t\n"); number > 1 && token != nullptr;
             token = std::strtok(nullptr, " \t\n")) {
            values.push_back(static_cast<float>(std::strtod(token, nullptr)));
        }
    }
    return values;
}

std::vector<float> TextRun::ValuesByReader() const {
    tidora::GridFile grid;
    static_cast<void>(tidora::ReadTextGrid(m_grid, grid));
    return std::move(grid.values);
}

std::function<double()> TextRun::ProgramTime() const {
    return [this] { return ProcessSeconds(m_folder, {TIDORA_PROGRAM, "TdrConf.txt"}); };
}

std::function<double()> TextRun::WordCountTime() const {
    return [this] { return ProcessSeconds(m_folder, {"wc", "-w", "topo.txt"}); };
}

}  // namespace bench
