#pragma once

#include <cstdio>
#include <string>

#include "support/TextLines.h"

namespace tidora {

/// A file for writing, owned with its stream, that appears under its name only when it is complete: it is written
/// beside the name and then renamed, so that neither a failure nor an interruption leaves half a result that a script
/// could take for a whole one. The bytes are handed to the system, not forced to the disk. Nothing is printed; failures
/// show in IsOpen() and Commit().
///
/// What cannot be replaced is written in place: a device or a pipe; a file in a folder that takes no new ones, or none
/// of a longer name; and, once it is complete beside its name, what may be written but not renamed away: a file of
/// somebody else in a folder with the sticky bit, or one that is a mount. A symbolic link is followed, also to where no
/// file is yet.
class ReplacingFile {
public:
    /// Opens for writing. IsOpen() is then false exactly when `path` itself could not have been opened for writing.
    explicit ReplacingFile(const std::string& path);
    /// Removes what was not committed.
    ~ReplacingFile();
    ReplacingFile(const ReplacingFile&) = delete;
    ReplacingFile& operator=(const ReplacingFile&) = delete;

    [[nodiscard]] bool IsOpen() const noexcept { return m_file != nullptr; }
    [[nodiscard]] std::FILE* Stream() const noexcept { return m_file.get(); }

    /// Closes the file and puts it in its place. False when a write or the close failed, what stood under the name
    /// before being untouched then; or when the place takes neither the file nor its bytes. Requires: IsOpen().
    [[nodiscard]] bool Commit();

private:
    void OpenBeside();

    std::string m_finalPath;
    std::string m_partPath;  ///< empty: written in place
    FileHandle m_file;
};

}  // namespace tidora
