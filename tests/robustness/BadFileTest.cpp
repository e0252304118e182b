// Each file that a run reads, when it is not there, is no file, may not be read, is empty, endless or noise.

#include <doctest/doctest.h>

#include <random>

#include "robustness/Outcome.h"
#include "unit/ExpectedText.h"

namespace {

struct InputFile {
    const char* name;
    const char* message;      ///< of the driver, when the file is refused
    const char* unopened;     ///< detail when it cannot be opened
    const char* unformatted;  ///< detail when every line is empty text
};

const InputFile kInputFiles[] = {
    {"TdrConf.txt", kParseError, "Reading Parameter File Method.", "Reading Parameter File Method."},
    {"fault.txt", kFaultError, "Can not open file.", "You should check the Format of Fault File."},
    {"topo.txt", kTopographyError, "Can not open file.", "Region File > topo.txt"},
    {"topo.bin", kTopographyError, "Can not open file.", "ALL DATA NUM > 0"},
};

/// Makes a run that reads `file`.
void Prepare(const RunFolder& folder, const InputFile& file) {
    if (std::string(file.name) == "topo.bin") {
        folder.Put("topo.bin", BinaryGrid(0, 0, 3, 3, 1000));
        folder.Put(Configuration().Set(kTopography, "topo.bin"));
    }
}

std::string Noise(unsigned seed, std::size_t length) {
    std::mt19937 random(seed);
    std::string bytes;
    for (std::size_t i = 0; i < length; ++i) {
        bytes += static_cast<char>(random() & 0xFFU);
    }
    return bytes;
}

}  // namespace

TEST_CASE("the inputs that the other cases break run as they are") {
    for (const InputFile& file : kInputFiles) {
        CAPTURE(file.name);
        const RunFolder folder;
        Prepare(folder, file);
        const Ending ending = RunIn(folder.Path());
        CheckSuccess(ending, folder);
        for (const std::string& result : SeriesFilesInOrder()) {
            CAPTURE(result);
            CHECK(FileExists(folder.At(result)));
        }
    }
}

TEST_CASE("a missing input file is refused by name") {
    for (const InputFile& file : kInputFiles) {
        CAPTURE(file.name);
        const RunFolder folder;
        Prepare(folder, file);
        folder.Remove(file.name);
        CheckFailure(RunIn(folder.Path()), folder, file.message, file.unopened);
        CHECK_FALSE(FileExists(folder.At("out")));
    }
}

TEST_CASE("a directory in place of an input file cannot be opened") {
    for (const InputFile& file : kInputFiles) {
        CAPTURE(file.name);
        const RunFolder folder;
        Prepare(folder, file);
        folder.Remove(file.name);
        folder.MakeFolder(file.name);
        CheckFailure(RunIn(folder.Path()), folder, file.message, file.unopened);
    }
}

TEST_CASE("a chain of links that ends nowhere cannot be opened") {
    for (const InputFile& file : kInputFiles) {
        CAPTURE(file.name);
        const RunFolder folder;
        Prepare(folder, file);
        folder.Link(file.name, file.name);
        CheckFailure(RunIn(folder.Path()), folder, file.message, file.unopened);
    }
}

TEST_CASE("an input file that may not be read cannot be opened") {
    if (!CanRunAsOrdinaryUser()) {
        return;
    }
    Surroundings ordinaryUser;
    ordinaryUser.isOrdinaryUser = true;
    for (const InputFile& file : kInputFiles) {
        CAPTURE(file.name);
        const RunFolder folder;
        folder.MakeFolder("out");
        Prepare(folder, file);
        CheckSuccess(RunIn(folder.Path(), ordinaryUser), folder);
        folder.SetMode(file.name, 0);
        CheckFailure(RunIn(folder.Path(), ordinaryUser), folder, file.message, file.unopened);
    }
}

TEST_CASE("an empty input file is refused, but a fault without elements raises nothing") {
    for (const InputFile& file : kInputFiles) {
        CAPTURE(file.name);
        const RunFolder folder;
        Prepare(folder, file);
        folder.Put(file.name, "");
        const Ending ending = RunIn(folder.Path());
        const bool isGrid = std::string(file.message) == kTopographyError;
        if (std::string(file.name) == "fault.txt") {
            CheckSuccess(ending, folder);
            CHECK(FileBytes(folder.At("out/Tdr_bay.txt")).empty());
        } else {
            CheckFailure(ending, folder, file.message, isGrid ? "ALL DATA NUM > 0" : file.unformatted);
        }
    }
}

TEST_CASE("an input that never ends and has no line is refused at once") {
    for (const InputFile& file : kInputFiles) {
        CAPTURE(file.name);
        const RunFolder folder;
        Prepare(folder, file);
        folder.Link(file.name, "/dev/zero");
        CheckFailure(RunIn(folder.Path()), folder, file.message, file.unformatted);
    }
}

TEST_CASE("noise in place of an input file ends the run cleanly") {
    for (const InputFile& file : kInputFiles) {
        for (const unsigned seed : {1U, 2U, 3U}) {
            CAPTURE(file.name);
            CAPTURE(seed);
            const RunFolder folder;
            Prepare(folder, file);
            folder.Put(file.name, Noise(seed, 6000));
            CheckCleanEnd(RunIn(folder.Path()), folder);
        }
    }
}

TEST_CASE("noise behind a good start of an input file ends the run cleanly") {
    for (const InputFile& file : kInputFiles) {
        for (const unsigned seed : {4U, 5U}) {
            CAPTURE(file.name);
            CAPTURE(seed);
            const RunFolder folder;
            Prepare(folder, file);
            const std::string good = FileBytes(folder.At(file.name));
            folder.Put(file.name, good.substr(0, good.size() * 3 / 4) + Noise(seed, 6000));
            CheckCleanEnd(RunIn(folder.Path()), folder);
        }
    }
}
