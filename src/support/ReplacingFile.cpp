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

/// Whether what stands there may be overwritten. Asked of the file itself: a rename needs the folder's leave alone, and
/// would replace a file that is write-protected.
/// Test: "a result that may not be overwritten stays, though its folder would let it be replaced".
bool CanOpenForWriting(const std::string& path) {
    // Not truncated, not created, and no waiting for the reader of a pipe.
    const int descriptor = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    close(descriptor);
    return true;
}

/// Where a file opened as `path` lies: at the end of a chain of symbolic links, whether or not something is there;
/// `path` itself where there is none. The rename must not put a file in the place of the link. Step by step, since
/// nothing that resolves whole paths does so for what is not there.
/// Test: "a link to what is not there yet is followed, whatever chain of links leads there".
std::string Resolved(const std::string& path) {
    constexpr int kLinks = 40;  // as many as Linux follows in a path: a longer chain cannot be opened either
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

/// A name in the folder of `path` that no result has: hidden, and without the ending of one. In that folder, because a
/// rename across file systems is none; with the number of the process, so that two runs do not share one.
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
        close(descriptor);  // the stream would have owned it
        return false;
    }
    std::array<char, std::size_t{1} << 16U> bytes{};  // 64 KiB: few calls, and little of the stack
    bool isWhole = true;
    while (isWhole) {  // a read of 0 bytes is the end or an error; ferror() says which
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
    const bool exists = stat(path.c_str(), &status) == 0;  // of where links lead, not of a link
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
    if (!m_file) {  // a device or a pipe, or no room for another name beside it: in place
        m_file.reset(std::fopen(path.c_str(), "wb"));
    } else if (exists) {
        // The permissions of the old file, without the bits of its type. Where they cannot be set the result is worth
        // more than its mode.
        fchmod(fileno(m_file.get()), status.st_mode & 07777U);
    }
}

ReplacingFile::~ReplacingFile() {
    m_file.reset();  // before its name goes: some file systems keep an open file under another one
    if (!m_partPath.empty()) {
        std::remove(m_partPath.c_str());
    }
}

void ReplacingFile::OpenBeside() {
    // Killed runs leave their parts, and process numbers come again. A folder with a hundred of one number has another
    // trouble: then in place. Test: "beside a hundred parts that were left behind a file is written in place".
    constexpr int kAttempts = 100;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        m_partPath = PartName(m_finalPath, attempt);
        m_file.reset(std::fopen(m_partPath.c_str(), "wbxe"));  // new, and not passed on to other programs
        if (m_file) {
            return;
        }
        if (errno != EEXIST) {
            break;  // the next name would fare no better
        }
    }
    m_partPath.clear();
}

bool ReplacingFile::Commit() {
    const bool isWritten = std::ferror(m_file.get()) == 0;
    // The last buffer is written by the close: a full disk may show only here.
    const bool isClosed = std::fclose(m_file.release()) == 0;
    if (!isWritten || !isClosed) {
        return false;
    }
    if (m_partPath.empty()) {
        return true;  // written in place
    }
    if (std::rename(m_partPath.c_str(), m_finalPath.c_str()) == 0) {
        m_partPath.clear();  // the destructor has nothing left to remove
        return true;
    }
    return CopyInPlace(m_partPath, m_finalPath);
}

}  // namespace tidora
