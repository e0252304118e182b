#include "robustness/LimitedRun.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <iostream>
#include <stdexcept>

#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "unit/ExpectedText.h"

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kHasSanitizer = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kHasSanitizer = true;
#else
constexpr bool kHasSanitizer = false;
#endif
#else
constexpr bool kHasSanitizer = false;
#endif

// A run of these tests takes some hundredths of a second of processor time and 30 MiB; what exceeds the limits hangs or
// asks for what no file holds. The patience only ends a run that waits for ever: a busy machine may be slow.
constexpr rlim_t kProcessorSeconds = kHasSanitizer ? 60 : 10;
constexpr rlim_t kMemory = rlim_t{512} << 20U;
constexpr std::chrono::minutes kPatience{10};
constexpr int kPollMilliseconds = 100;
constexpr useconds_t kPauseMicroseconds = 200;

constexpr uid_t kNobody = 65534;
constexpr int kCannotStart = 127;

using Clock = std::chrono::steady_clock;

/// A limit that is lower already stays: only the superuser could raise it.
bool Limit(__rlimit_resource_t resource, rlim_t value) {
    rlimit limit = {};
    if (getrlimit(resource, &limit) != 0) {
        return false;
    }
    limit.rlim_max = std::min(limit.rlim_max, value);
    limit.rlim_cur = limit.rlim_max;
    return setrlimit(resource, &limit) == 0;
}

/// As a program starts from a terminal: a shell in the background has its programs ignore SIGINT, others block signals.
void ResetSignals() {
    for (const int number : {SIGINT, SIGTERM, SIGPIPE, SIGXFSZ}) {
        std::signal(number, SIG_DFL);
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

bool SetLimits(const Surroundings& surroundings) {
    // The address sanitizer reserves terabytes of address space.
    const bool hasMemoryLimit = kHasSanitizer || Limit(RLIMIT_AS, kMemory);
    const bool hasFileLimit = !surroundings.largestFile || Limit(RLIMIT_FSIZE, *surroundings.largestFile);
    if (surroundings.largestFile && !surroundings.isKilledByLargeFile) {
        std::signal(SIGXFSZ, SIG_IGN);
    }
    return Limit(RLIMIT_CORE, 0) && Limit(RLIMIT_CPU, kProcessorSeconds) && hasMemoryLimit && hasFileLimit;
}

/// The superuser becomes nobody; anyone else is an ordinary user already.
bool BecomeOrdinaryUser() {
    return geteuid() != 0 || (setgroups(0, nullptr) == 0 && setgid(kNobody) == 0 && setuid(kNobody) == 0);
}

bool SetStreams(const Surroundings& surroundings, int out, int err) {
    if (!surroundings.hasStreams) {
        close(STDIN_FILENO);
        close(STDOUT_FILENO);
        close(STDERR_FILENO);
        return true;
    }
    const int in = open("/dev/null", O_RDONLY | O_CLOEXEC);
    return dup2(in, STDIN_FILENO) >= 0 && dup2(out, STDOUT_FILENO) >= 0 && dup2(err, STDERR_FILENO) >= 0;
}

/// Between fork and exec: nothing here allocates. The program is open already, since an ordinary user may not reach it.
[[noreturn]] void BecomeProgram(int program, const char* folder, const Surroundings& surroundings, int out, int err) {
    static char name[] = "Tidora";
    static char configuration[] = "TdrConf.txt";
    std::array<char*, 3> words = {name, configuration, nullptr};
    ResetSignals();
    const bool isReady = chdir(folder) == 0 && SetLimits(surroundings) &&
                         (!surroundings.isOrdinaryUser || BecomeOrdinaryUser()) && SetStreams(surroundings, out, err);
    if (isReady) {
        fexecve(program, words.data(), environ);
    }
    _exit(kCannotStart);
}

void CloseOnce(int& descriptor) {
    if (descriptor >= 0) {
        close(descriptor);
    }
    descriptor = -1;
}

/// Appends what is there to `text`; closes `descriptor` at the end of the stream.
void Drain(int& descriptor, std::string& text) {
    std::array<char, 4096> buffer{};
    const ssize_t count = read(descriptor, buffer.data(), buffer.size());
    if (count > 0) {
        text.append(buffer.data(), static_cast<std::size_t>(count));
    } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
        CloseOnce(descriptor);
    }
}

std::string StatusText(int status) {
    return WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status)) : std::to_string(WEXITSTATUS(status));
}

}  // namespace

RunningProgram::RunningProgram(const std::string& folder, const Surroundings& surroundings) {
    std::array<int, 2> out{};
    std::array<int, 2> err{};
    int program = open(TIDORA_PROGRAM, O_RDONLY | O_CLOEXEC);
    if (program < 0 || pipe2(out.data(), O_CLOEXEC) != 0 || pipe2(err.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("cannot prepare a run of " TIDORA_PROGRAM);
    }
    m_process = fork();
    if (m_process == 0) {
        BecomeProgram(program, folder.c_str(), surroundings, out[1], err[1]);
    }
    CloseOnce(program);
    CloseOnce(out[1]);
    CloseOnce(err[1]);
    m_out = out[0];
    m_err = err[0];
    if (m_process < 0) {
        throw std::runtime_error("cannot start a process");
    }
}

RunningProgram::~RunningProgram() {
    if (m_process > 0) {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }
    StopReading();
}

/// False when both streams have ended.
bool RunningProgram::ReadMore() {
    if (m_out < 0 && m_err < 0) {
        return false;
    }
    std::array<pollfd, 2> streams = {pollfd{m_out, POLLIN, 0}, pollfd{m_err, POLLIN, 0}};
    if (poll(streams.data(), streams.size(), kPollMilliseconds) > 0) {
        if (streams[0].revents != 0) {
            Drain(m_out, m_ending.out);
        }
        if (streams[1].revents != 0) {
            Drain(m_err, m_ending.err);
        }
    }
    return m_out >= 0 || m_err >= 0;
}

bool RunningProgram::WaitForOutput(const std::string& text, int count) {
    const Clock::time_point deadline = Clock::now() + kPatience;
    while (CountOf(m_ending.out, text) < static_cast<std::size_t>(count)) {
        if (!ReadMore() || Clock::now() >= deadline) {
            return false;
        }
    }
    return true;
}

void RunningProgram::Send(int signalNumber) const {
    kill(m_process, signalNumber);
}

void RunningProgram::StopReading() {
    CloseOnce(m_out);
    CloseOnce(m_err);
}

Ending RunningProgram::End() {
    const Clock::time_point deadline = Clock::now() + kPatience;
    int status = 0;
    bool hasEnded = false;
    while (!hasEnded && Clock::now() < deadline) {
        if (!ReadMore()) {
            usleep(kPauseMicroseconds);  // closed streams: only the process itself tells
        }
        hasEnded = (m_out < 0 && m_err < 0) && waitpid(m_process, &status, WNOHANG) == m_process;
    }
    if (hasEnded) {
        m_process = -1;
        m_ending.status = StatusText(status);
    } else {
        m_ending.status = "no end within " + std::to_string(kPatience.count()) + " min";
    }
    return m_ending;
}

Ending RunIn(const std::string& folder, const Surroundings& surroundings) {
    return RunningProgram(folder, surroundings).End();
}

bool CanRunAsOrdinaryUser() {
    const pid_t process = fork();
    if (process == 0) {
        _exit(BecomeOrdinaryUser() ? 0 : 1);
    }
    int status = 0;
    const bool can = process > 0 && waitpid(process, &status, 0) == process && status == 0;
    if (!can) {
        std::cout << "skipped: the superuser may do everything, and cannot become an ordinary user here" << std::endl;
        return false;
    }
    struct stat program {};
    const bool isForAll = stat(TIDORA_PROGRAM, &program) == 0 && (program.st_mode & S_IXOTH) != 0;
    if (geteuid() == 0 && !isForAll) {
        std::cout << "skipped: an ordinary user may not run the program that the superuser built" << std::endl;
        return false;
    }
    return true;
}
