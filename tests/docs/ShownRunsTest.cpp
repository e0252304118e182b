// The runs that README and manual show: their inputs are taken from the documents, their outputs compared with them.

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include <doctest/doctest.h>

#include <unistd.h>

#include "cli/ChildProcess.h"
#include "docs/Documents.h"
#include "main/RunMessages.h"

namespace fs = std::filesystem;

namespace {

// An empty folder for one test case, until the end of its scope: the process number keeps it apart from the same case
// of another test run.
class FreshFolder {
public:
    explicit FreshFolder(const std::string& name)
        : m_path(fs::path(TIDORA_SCRATCH_ROOT) / (name + "_" + std::to_string(getpid()))) {
        fs::remove_all(m_path);
        fs::create_directories(m_path);
    }
    ~FreshFolder() {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    FreshFolder(const FreshFolder&) = delete;
    FreshFolder& operator=(const FreshFolder&) = delete;

    [[nodiscard]] const fs::path& Path() const noexcept { return m_path; }

private:
    fs::path m_path;
};

void Write(const fs::path& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    REQUIRE(file.write(text.data(), static_cast<std::streamsize>(text.size())).flush());
}

ProcessResult Run(const std::string& program, const std::vector<std::string>& arguments, const fs::path& folder) {
    const FreshFolder streams("streams");
    return RunProgram(program, arguments, folder.string(), (streams.Path() / "stdout").string(),
                      (streams.Path() / "stderr").string());
}

void CheckShown(const std::string& shown, const std::string& actual) {
    CAPTURE(shown);
    CAPTURE(actual);
    CHECK(IsAsShown(LinesOf(shown), LinesOf(actual)));
}

}  // namespace

TEST_CASE("the run of the manual prints and writes what the manual shows") {
    const std::string manual = SourceText("docs/manual.md");
    const FreshFolder fresh("manual");
    const fs::path& folder = fresh.Path();
    for (const char* const name : {"TdrConf.txt", "fault.txt", "bay.txt"}) {
        Write(folder / name, ShownBlock(manual, std::string("file ") + name));
    }
    const ProcessResult result = Run(TIDORA_PROGRAM, {"TdrConf.txt"}, folder);
    CHECK(result.status == "0");
    CHECK(result.err.empty());
    CheckShown(ShownBlock(manual, "stdout of Tidora TdrConf.txt"), result.out);
    CHECK(FileBytes((folder / "out/Tdr_bay.txt").string()) == ShownBlock(manual, "file out/Tdr_bay.txt after the run"));
}

TEST_CASE("without an argument the program prints the usage text that the manual shows") {
    const FreshFolder folder("usage");
    const ProcessResult result = Run(TIDORA_PROGRAM, {}, folder.Path());
    CHECK(result.status == "0");
    CheckShown(ShownBlock(SourceText("docs/manual.md"), "stdout of Tidora"), result.out);
}

TEST_CASE("the manual names the message of every code that a run can raise") {
    const std::string manual = SourceText("docs/manual.md");
    for (const int code : {1, 2, 3, 4, 15}) {
        CAPTURE(code);
        CHECK(manual.find(std::string("| `") + tidora::MessageOf(code) + "` | " + std::to_string(code) + " |") !=
              std::string::npos);
    }
}

TEST_CASE("the geographic example prints what the README shows") {
    const FreshFolder fresh("tohoku2011");
    const fs::path& folder = fresh.Path();
    const fs::path example = fs::path(TIDORA_SOURCE_ROOT) / "examples/tohoku2011";
    fs::create_directories(folder / "geo");
    fs::copy_file(example / "geo/TdrConf.txt", folder / "geo/TdrConf.txt");
    fs::copy(example / "data", folder / "data");
    const ProcessResult result = Run(TIDORA_PROGRAM, {"TdrConf.txt"}, folder / "geo");
    CHECK(result.status == "0");
    CheckShown(ShownBlock(SourceText("README.md"), "stdout of examples/tohoku2011/geo"), result.out);
}

TEST_CASE("the library example of the README is the one that is built, and prints what is shown") {
    const std::string readme = SourceText("README.md");
    CHECK(ShownBlock(readme, "source: tests/docs/LibraryExample.cpp") == SourceText("tests/docs/LibraryExample.cpp"));
    const FreshFolder folder("library");
    const ProcessResult result = Run(TIDORA_LIBRARY_EXAMPLE, {}, folder.Path());
    CHECK(result.status == "0");
    CheckShown(ShownBlock(readme, "stdout of the library example"), result.out);
}

TEST_CASE("what is shown is compared line by line and an elision stands for any lines") {
    CHECK(IsAsShown({"a", "b"}, {"a", "b"}));
    CHECK(IsAsShown({"a", "[...]", "c"}, {"a", "b", "b", "c"}));
    CHECK(IsAsShown({"a", "[...]", "c"}, {"a", "c", "b", "c"}));
    CHECK(IsAsShown({"[...]", "b", "[...]"}, {"a", "b", "c"}));
    CHECK_FALSE(IsAsShown({"a"}, {"a", "b"}));
    CHECK_FALSE(IsAsShown({"b"}, {"a", "b"}));
    CHECK_FALSE(IsAsShown({"a", "[...]", "c"}, {"a", "b"}));
    CHECK_FALSE(IsAsShown({"a", "[...]", "a"}, {"a"}));
    CHECK_FALSE(IsAsShown({"[...]", "b", "[...]", "a"}, {"a", "b"}));
    CHECK_FALSE(IsAsShown({"a", "[...]", "b", "c", "[...]"}, {"a", "b", "d", "c"}));
    CHECK(LinesOf("x Calc Time : 7.2e-05[sec]  \n\n") == Lines{"x Calc Time : *[sec]", ""});
}
