#include "support/ReplacingFile.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tidora {
namespace {

/// Closes a file descriptor that only looked.
bool CanOpenForWriting(const std::string& path) {
    // Not truncated, not created, and no waiting for the reader of a pipe.
    const int descriptor = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    close(descriptor);
    return true;
}

/// The file behind a chain of symbolic links; `path` itself where there is none.
std::string Resolved(const std::string& path) {
    struct Free {
        // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): realpath allocates so
        void operator()(char* text) const noexcept { std::free(text); }
    };
    const std::unique_ptr<char, Free> resolved(realpath(path.c_str(), nullptr));
    return resolved ? resolved.get() : path;
}

/// A name in the folder of `path` that no result has: hidden, and without the ending of one.
std::string PartName(const std::string& path, int attempt) {
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : path.substr(0, slash + 1);
    return folder + ".tidora-" + std::to_string(getpid()) + "-" + std::to_string(attempt) + ".part";
}

}  // namespace

ReplacingFile::ReplacingFile(const std::string& path) : m_finalPath(Resolved(path)) {
    if (path.empty()) {
        return;
    }
    struct stat status {};
    const bool exists = stat(m_finalPath.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) {
        m_file.reset(std::fopen(m_finalPath.c_str(), "wb"));
        return;
    }
    if (exists && !CanOpenForWriting(m_finalPath)) {
        return;
    }
    OpenBeside();
    if (!m_file && exists) {
        m_partPath.clear();
        m_file.reset(std::fopen(m_finalPath.c_str(), "wb"));
    }
    if (m_file && exists) {
        fchmod(fileno(m_file.get()), status.st_mode & 07777U);
    }
}

ReplacingFile::~ReplacingFile() {
    m_file.reset();
    if (!m_partPath.empty()) {
        std::remove(m_partPath.c_str());
    }
}

void ReplacingFile::OpenBeside() {
    constexpr int kAttempts = 100;  // a process of the same number may have left its own behind
    constexpr mode_t kMode = 0666;  // less the umask, as any file that a program creates
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        m_partPath = PartName(m_finalPath, attempt);
        const int descriptor = open(m_partPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
        if (descriptor >= 0) {
            m_file.reset(fdopen(descriptor, "wb"));
            return;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    m_partPath.clear();
}

bool ReplacingFile::Commit() {
    const bool isWritten = std::ferror(m_file.get()) == 0;
    const bool isClosed = std::fclose(m_file.release()) == 0;
    if (!isWritten || !isClosed) {
        return false;
    }
    if (!m_partPath.empty()) {
        if (std::rename(m_partPath.c_str(), m_finalPath.c_str()) != 0) {
            return false;
        }
        m_partPath.clear();
    }
    return true;
}

}  // namespace tidora
