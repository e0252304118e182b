#include <cstddef>

#include <sys/stat.h>

#include "config/ConfReader.h"

namespace tidora {
namespace {

/// The owner may write, everybody may enter and list; the umask takes from that.
constexpr mode_t kMode = 0755;

/// Creates every prefix of `path` that ends before a "/" (one at its very start does not count: before it there is
/// nothing to make), then `path` itself unless it ends with one and is made already. Stops at the first prefix that
/// cannot be created. Tests: "a leading slash is no separator", "a trailing slash creates the directory before it",
/// "a file in the way stops the chain, and nothing is created behind it".
void CreateChain(const std::string& path) {
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1)) {
        const std::string prefix = path.substr(0, slash);
        if (!ConfReader::IsExistDir(prefix) && mkdir(prefix.c_str(), kMode) != 0) {
            return;
        }
    }
    if (path.back() != '/') {
        mkdir(path.c_str(), kMode);  // whether it worked shows in what is there afterwards
    }
}

}  // namespace

bool ConfReader::IsExistDir(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool ConfReader::MakeDir(const std::string& path) {
    if (path.empty()) {
        return false;
    }
    if (IsExistDir(path)) {
        return true;
    }
    // Kept on purpose: a path of one character is never created.
    // Test: "a directory with a name of one character is not created".
    if (path.size() > 1) {
        CreateChain(path);
    }
    return IsExistDir(path);
}

}  // namespace tidora
