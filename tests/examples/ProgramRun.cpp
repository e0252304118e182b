#include "ProgramRun.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

/// Copies regular files and folders; a folder named `out` stays behind.
void CopyInputs(const fs::path& from, const fs::path& to) {
    fs::create_directories(to);
    for (const fs::directory_entry& entry : fs::directory_iterator(from)) {
        const fs::path name = entry.path().filename();
        if (!entry.is_directory()) {
            fs::copy_file(entry.path(), to / name);
        } else if (name != "out") {
            CopyInputs(entry.path(), to / name);
        }
    }
}

/// What the child process does between its start and the program.
class SpawnActions {
public:
    SpawnActions() { Check(posix_spawn_file_actions_init(&m_actions)); }
    ~SpawnActions() { posix_spawn_file_actions_destroy(&m_actions); }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;

    void ChangeFolder(const std::string& folder) {
        Check(posix_spawn_file_actions_addchdir_np(&m_actions, folder.c_str()));
    }
    void WriteTo(int descriptor, const std::string& path) {
        Check(
            posix_spawn_file_actions_addopen(&m_actions, descriptor, path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644));
    }
    [[nodiscard]] const posix_spawn_file_actions_t* Get() const noexcept { return &m_actions; }

private:
    static void Check(int error) {
        if (error != 0) {
            throw std::runtime_error("cannot prepare a process");
        }
    }

    posix_spawn_file_actions_t m_actions = {};
};

}  // namespace

ProgramResult RunProgram(const std::string& folder, const std::string& configuration) {
    const std::string outPath = folder + "/run.stdout";
    const std::string errPath = folder + "/run.stderr";
    SpawnActions actions;
    actions.ChangeFolder(folder);
    actions.WriteTo(STDOUT_FILENO, outPath);
    actions.WriteTo(STDERR_FILENO, errPath);
    std::string program = TIDORA_PROGRAM;
    std::string argument = configuration;
    char* const argv[] = {program.data(), argument.data(), nullptr};
    pid_t child = 0;
    if (posix_spawn(&child, program.c_str(), actions.Get(), nullptr, argv, environ) != 0) {
        throw std::runtime_error("cannot start " + program);
    }
    int status = 0;
    if (waitpid(child, &status, 0) != child) {
        throw std::runtime_error("cannot wait for " + program);
    }
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, FileBytes(outPath), FileBytes(errPath)};
}

ExampleCopy::ExampleCopy(const std::vector<std::string>& folders) : m_folder(m_scratch.At(folders.front())) {
    for (const std::string& folder : folders) {
        CopyInputs(fs::path(TIDORA_EXAMPLES) / folder, m_scratch.At(folder));
    }
}

void ExampleCopy::Write(const std::string& name, const std::string& text) const {
    std::ofstream file(At(name));
    file << text;
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write " + At(name));
    }
}

ExampleRun::ExampleRun(const std::vector<std::string>& folders, const std::string& configuration)
    : copy(folders), result(copy.Run(configuration)) {}

int CountLinesFrom(const std::string& text, const std::string& start) {
    std::istringstream lines(text);
    int count = 0;
    for (std::string line; std::getline(lines, line);) {
        count += line.compare(0, start.size(), start) == 0 ? 1 : 0;
    }
    return count;
}

int CountProgressLines(const std::string& text, int elementCount) {
    std::istringstream lines(text);
    int count = 0;
    for (std::string line; std::getline(lines, line);) {
        const std::string expected =
            std::to_string(count % elementCount + 1) + "/" + std::to_string(elementCount) + " Completed ";
        count += line.compare(0, expected.size(), expected) == 0 ? 1 : 0;
    }
    return count;
}

std::vector<std::string> FileNames(const std::string& folder) {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}
