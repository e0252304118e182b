#include "robustness/SmallDisk.h"

#include <cerrno>
#include <cstring>
#include <iostream>

#include <sched.h>
#include <sys/mount.h>

namespace {

/// Mounts of this process are its own from here on. False, with errno, when it may not have its own.
bool LeaveTheCommonMounts() {
    static const int error =
        unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 ? 0 : errno;
    errno = error;
    return error == 0;
}

}  // namespace

SmallDisk::SmallDisk(const std::string& folder, std::size_t bytes, bool isReadOnly) : m_folder(folder) {
    const std::string options = "mode=0777,size=" + std::to_string(bytes);
    const unsigned long flags = isReadOnly ? MS_RDONLY : 0;
    m_isThere = LeaveTheCommonMounts() && mount("none", folder.c_str(), "tmpfs", flags, options.c_str()) == 0;
    if (!m_isThere) {
        std::cout << "skipped: no file system can be mounted here (" << std::strerror(errno) << ")" << std::endl;
    }
}

SmallDisk::~SmallDisk() {
    if (m_isThere) {
        umount2(m_folder.c_str(), MNT_DETACH);
    }
}
