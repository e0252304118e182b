#pragma once

#include <string>
#include <string_view>

/// A folder of its own below the build folder, removed with everything in it at the end of its scope. Its path is
/// absolute and holds no ".bin".
class ScratchFolder {
public:
    ScratchFolder();
    /// In another place than the build folder; the path starts so.
    explicit ScratchFolder(const std::string& prefix);
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] const std::string& Path() const noexcept { return m_path; }
    /// Path of `name` in this folder.
    [[nodiscard]] std::string At(const std::string& name) const { return m_path + "/" + name; }
    /// Writes `bytes` to `name` and returns its path.
    [[nodiscard]] std::string Write(const std::string& name, std::string_view bytes) const;
    /// Makes a folder `name` in this folder and returns its path.
    [[nodiscard]] std::string MakeFolder(const std::string& name) const;

private:
    std::string m_path;
};

/// All bytes of a file. Throws when it cannot be read.
[[nodiscard]] std::string FileBytes(const std::string& path);

[[nodiscard]] bool FileExists(const std::string& path);

/// Whether "/dev/full", on which every write fails for want of space, is that device. Prints the reason when not: where
/// the device is missing, the superuser would make a file of that name.
[[nodiscard]] bool HasFullDevice();

/// Makes `path` the current folder until the end of the scope.
class CurrentFolder {
public:
    explicit CurrentFolder(const std::string& path);
    ~CurrentFolder();
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;

private:
    std::string m_previous;
};
