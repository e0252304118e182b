#include "ChildProcess.h"

#include <chrono>
#include <csignal>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

// Only ends a program that waits for ever: a busy machine may be slow.
constexpr std::chrono::minutes kTimeLimit{10};
constexpr std::chrono::milliseconds kPause{1};
constexpr int kCannotStart = 127;

/// Makes `path` the stream `descriptor` of this process.
bool Redirect(const char* path, int flags, int descriptor) {
    constexpr mode_t kMode = 0600;
    const int opened = open(path, flags | O_CLOEXEC, kMode);
    return opened >= 0 && dup2(opened, descriptor) >= 0;
}

/// Between fork and exec: nothing here allocates.
[[noreturn]] void BecomeProgram(char* const* words, const std::string& folder, const std::string& out,
                                const std::string& err) {
    const int toWrite = O_WRONLY | O_CREAT | O_TRUNC;
    if (Redirect("/dev/null", O_RDONLY, STDIN_FILENO) && Redirect(out.c_str(), toWrite, STDOUT_FILENO) &&
        Redirect(err.c_str(), toWrite, STDERR_FILENO) && chdir(folder.c_str()) == 0) {
        execv(words[0], words);
    }
    _exit(kCannotStart);
}

std::string StatusText(int status) {
    return WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status)) : std::to_string(WEXITSTATUS(status));
}

/// Waits for the process; ends it when its time is up.
std::string WaitFor(pid_t process) {
    const Clock::time_point deadline = Clock::now() + kTimeLimit;
    int status = 0;
    while (waitpid(process, &status, WNOHANG) == 0) {
        if (Clock::now() >= deadline) {
            kill(process, SIGKILL);
            waitpid(process, &status, 0);
            return "no end within " + std::to_string(kTimeLimit.count()) + " min";
        }
        std::this_thread::sleep_for(kPause);
    }
    return StatusText(status);
}

}  // namespace

ProcessResult RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                         const std::string& folder, const std::string& out, const std::string& err) {
    std::vector<std::string> texts = {program};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> words;
    for (std::string& text : texts) {
        words.push_back(text.data());
    }
    words.push_back(nullptr);

    const pid_t process = fork();
    if (process < 0) {
        throw std::runtime_error("cannot start a process");
    }
    if (process == 0) {
        BecomeProgram(words.data(), folder, out, err);
    }
    ProcessResult result;
    result.status = WaitFor(process);
    if (result.status == std::to_string(kCannotStart)) {
        throw std::runtime_error("cannot run " + program);
    }
    result.out = FileBytes(out);
    result.err = FileBytes(err);
    return result;
}

std::string FileBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + path);
    }
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}
