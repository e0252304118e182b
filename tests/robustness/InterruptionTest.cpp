// Runs that a signal ends: no result stands half written under its name. What was being written may stay behind,
// hidden.

#include <doctest/doctest.h>

#include <csignal>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "robustness/Outcome.h"

namespace fs = std::filesystem;

namespace {

constexpr int kSide = 700;  ///< results of 2 MB: writing one takes longer than sending a signal
constexpr std::uint64_t kResultBytes = 28 + std::uint64_t{4} * kSide * kSide;

/// A run of two intervals over a large grid, mostly writing.
void PutLargeRun(const RunFolder& folder) {
    folder.Put(Configuration().Set(kTopography, "topo.bin").Set(kFilter, "0").Set(kBandMode, "-1"));
    folder.Put("topo.bin", BinaryGrid(0, 0, kSide, kSide, 100));
    folder.Put("fault.txt",
               "1000 1500 500 300 10 40 90 1500 1000 0 0 0 5\n1000 1500 500 300 10 40 90 1500 1000 0 0 30 5\n");
}

/// A pipe in the place of the run's last result: however slow the test is, the run waits there until Open().
class Gate {
public:
    explicit Gate(const RunFolder& folder) : m_path(folder.At("out/HRZ_bay.txt")) {
        folder.MakeFolder("out");
        REQUIRE(mkfifo(m_path.c_str(), 0666) == 0);
    }
    ~Gate() {
        if (m_reader >= 0) {
            close(m_reader);
        }
    }
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;

    /// From here on the run may end.
    void Open() {
        m_reader = open(m_path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        REQUIRE(m_reader >= 0);
    }

private:
    std::string m_path;
    int m_reader = -1;
};

std::string NameOf(int signalNumber) {
    return "signal " + std::to_string(signalNumber);
}

/// Bytes of the one file that was being written; 0 when there is none.
std::uint64_t BytesOfPart(const std::string& outFolder) {
    std::uint64_t bytes = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(outFolder)) {
        if (entry.path().extension() == ".part") {
            CHECK(entry.path().filename().string().front() == '.');
            CHECK(bytes == 0);
            bytes = entry.file_size();
        }
    }
    return bytes;
}

}  // namespace

TEST_CASE("a run that is ended in the middle of a grid leaves none of it under its name") {
    Surroundings killed;
    killed.isKilledByLargeFile = true;
    for (const std::uint64_t bytes : {std::uint64_t{28}, std::uint64_t{4096}, kResultBytes / 2, kResultBytes - 1}) {
        for (const bool hasEarlier : {false, true}) {
            CAPTURE(bytes);
            CAPTURE(hasEarlier);
            const RunFolder folder;
            PutLargeRun(folder);
            folder.MakeFolder("out");
            if (hasEarlier) {
                folder.Put("out/Tdr_bay_0000s.bin", "an earlier result");
            }
            killed.largestFile = bytes;
            CHECK(RunIn(folder.Path(), killed).status == NameOf(SIGXFSZ));
            CHECK(BytesOfPart(folder.At("out")) == bytes);  // it was in the middle
            CHECK(FileExists(folder.At("out/Tdr_bay_0000s.bin")) == hasEarlier);
            if (hasEarlier) {
                CHECK(FileBytes(folder.At("out/Tdr_bay_0000s.bin")) == "an earlier result");
            }
        }
    }
}

TEST_CASE("a signal at any moment of the writing leaves whole results only") {
    const std::string writing = ">>>>>>>>>>>>>>>>>> Write File : ";
    for (const int signalNumber : {SIGINT, SIGTERM, SIGKILL}) {
        for (int file = 1; file <= 6; ++file) {
            CAPTURE(signalNumber);
            CAPTURE(file);
            const RunFolder folder;
            PutLargeRun(folder);
            const Gate gate(folder);
            RunningProgram run(folder.Path());
            REQUIRE(run.WaitForOutput(writing, file));
            usleep(static_cast<useconds_t>(300 * (file - 1)));
            run.Send(signalNumber);
            CHECK(run.End().status == NameOf(signalNumber));
            CheckResultsAreWhole(folder.At("out"));
        }
    }
}

TEST_CASE("a reader of the progress lines that goes away leaves whole results only") {
    for (int file = 1; file <= 3; ++file) {
        CAPTURE(file);
        const RunFolder folder;
        PutLargeRun(folder);
        Gate gate(folder);
        RunningProgram run(folder.Path());
        REQUIRE(run.WaitForOutput(">>>>>>>>>>>>>>>>>> Write File : ", file));
        run.StopReading();
        gate.Open();
        CHECK(run.End().status == NameOf(SIGPIPE));
        CheckResultsAreWhole(folder.At("out"));
    }
}

TEST_CASE("a signal while the run waits for an input ends it, and nothing has been made") {
    const struct {
        const char* file;
        const char* lastLine;
    } kWaits[] = {
        {"TdrConf.txt", ">>>>>>>>>>>>>>>>>> Parameter File Input:\n"},
        {"fault.txt", ">>>>>>>>>>>>>>>>>> Fault Input:fault.txt\n"},
        {"topo.txt", ">>>>>>>>>>>>>>>>>> Region Input:topo.txt\n"},
    };
    for (const auto& wait : kWaits) {
        for (const int signalNumber : {SIGINT, SIGTERM}) {
            CAPTURE(wait.file);
            CAPTURE(signalNumber);
            const RunFolder folder;
            folder.Remove(wait.file);
            REQUIRE(mkfifo(folder.At(wait.file).c_str(), 0644) == 0);
            RunningProgram run(folder.Path());
            REQUIRE(run.WaitForOutput(wait.lastLine));
            run.Send(signalNumber);
            CHECK(run.End().status == NameOf(signalNumber));
            CHECK_FALSE(FileExists(folder.At("out")));
        }
    }
}
