#include "unit/ScratchFolder.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace fs = std::filesystem;

ScratchFolder::ScratchFolder() : ScratchFolder(TIDORA_SCRATCH_ROOT "/") {}

ScratchFolder::ScratchFolder(const std::string& prefix) {
    // The process number keeps test programs apart that run side by side, the counter several folders of one of them.
    static int made = 0;
    m_path = prefix + std::to_string(getpid()) + "_" + std::to_string(made++);
    fs::remove_all(m_path);
    fs::create_directories(m_path);
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

std::string ScratchFolder::Write(const std::string& name, std::string_view bytes) const {
    std::string path = At(name);
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write " + path);
    }
    return path;
}

std::string ScratchFolder::MakeFolder(const std::string& name) const {
    fs::create_directories(At(name));
    return At(name);
}

std::string FileBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file || fs::is_directory(path)) {
        throw std::runtime_error("cannot read " + path);
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
}

bool FileExists(const std::string& path) {
    return fs::exists(path);
}

bool HasFullDevice() {
    constexpr unsigned kMajor = 1;  // Linux: the memory devices
    constexpr unsigned kMinor = 7;
    struct stat status {};
    const bool isFullDevice = stat("/dev/full", &status) == 0 && S_ISCHR(status.st_mode) &&
                              major(status.st_rdev) == kMajor && minor(status.st_rdev) == kMinor;
    if (!isFullDevice) {
        std::cout << "skipped: /dev/full is not the device that is always full" << std::endl;
    }
    return isFullDevice;
}

CurrentFolder::CurrentFolder(const std::string& path) : m_previous(fs::current_path().string()) {
    fs::current_path(path);
}

CurrentFolder::~CurrentFolder() {
    std::error_code ignored;
    fs::current_path(m_previous, ignored);
}
