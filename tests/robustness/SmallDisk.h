#pragma once

#include <string>

/// A file system of few bytes on a folder, until the end of the scope. Only this process and those it starts see it.
class SmallDisk {
public:
    /// Prints the reason when nothing can be mounted here.
    SmallDisk(const std::string& folder, std::size_t bytes, bool isReadOnly = false);
    ~SmallDisk();
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    [[nodiscard]] bool IsThere() const noexcept { return m_isThere; }

private:
    std::string m_folder;
    bool m_isThere = false;
};
