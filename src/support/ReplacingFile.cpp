#include "support/ReplacingFile.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tidora {
namespace {

/// Whether what stands there may be overwritten.
bool CanOpenForWriting(const std::string& path) {
    // Not truncated, not created, and no waiting for the reader of a pipe.
    const int descriptor = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    close(descriptor);
    return true;
}

/// Where a file opened as `path` lies: behind a chain of symbolic links, whether or not something is there; `path`
/// itself where there is none. Step by step, since nothing that resolves whole paths does so for what is not there.
std::string Resolved(const std::string& path) {
    constexpr int kLinks = 40;  // as many as the system follows
    std::filesystem::path resolved = path;
    for (int link = 0; link < kLinks; ++link) {
        std::error_code isNoLink;
        const std::filesystem::path target = std::filesystem::read_symlink(resolved, isNoLink);
        if (isNoLink) {
            break;
        }
        resolved = resolved.parent_path() / target;
    }
    return resolved.string();
}

/// A name in the folder of `path` that no result has: hidden, and without the ending of one.
std::string PartName(const std::string& path, int attempt) {
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : path.substr(0, slash + 1);
    return folder + ".tidora-" + std::to_string(getpid()) + "-" + std::to_string(attempt) + ".part";
}

/// Overwrites the file `to` with the bytes of `from`. False when it cannot be opened for writing or does not take them
/// all. Opened as what is there, never created: systems refuse to create over somebody else's file in a sticky folder.
bool CopyInPlace(const std::string& from, const std::string& to) {
    const FileHandle source(std::fopen(from.c_str(), "rb"));
    const int descriptor = source ? open(to.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC) : -1;
    if (descriptor < 0) {
        return false;
    }
    FileHandle target(fdopen(descriptor, "wb"));
    if (!target) {
        close(descriptor);
        return false;
    }
    std::array<char, std::size_t{1} << 16U> bytes{};
    bool isWhole = true;
    while (isWhole) {
        const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), source.get());
        if (count == 0) {
            break;
        }
        isWhole = std::fwrite(bytes.data(), 1, count, target.get()) == count;
    }
    const bool isRead = std::ferror(source.get()) == 0;
    const bool isClosed = std::fclose(target.release()) == 0;
    return isWhole && isRead && isClosed;
}

}  // namespace

ReplacingFile::ReplacingFile(const std::string& path) : m_finalPath(Resolved(path)) {
    struct stat status {};
    const bool exists = stat(path.c_str(), &status) == 0;
    if (path.empty() || (!exists && errno != ENOENT)) {
        return;  // a chain of links without end, say: it cannot be opened, though it could be replaced
    }
    const bool isFile = exists && S_ISREG(status.st_mode);
    if (isFile && !CanOpenForWriting(path)) {
        return;
    }
    if (isFile || !exists) {
        OpenBeside();
    }
    if (!m_file) {
        m_file.reset(std::fopen(path.c_str(), "wb"));
    } else if (exists) {
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
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        m_partPath = PartName(m_finalPath, attempt);
        m_file.reset(std::fopen(m_partPath.c_str(), "wbxe"));  // new, and not passed on to other programs
        if (m_file) {
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
    if (m_partPath.empty()) {
        return true;
    }
    if (std::rename(m_partPath.c_str(), m_finalPath.c_str()) == 0) {
        m_partPath.clear();
        return true;
    }
    return CopyInPlace(m_partPath, m_finalPath);
}

}  // namespace tidora
