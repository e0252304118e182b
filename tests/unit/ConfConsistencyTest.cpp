#include <doctest/doctest.h>

#include <string>

#include "config/ConfReader.h"
#include "unit/ExpectedText.h"
#include "unit/PrintedText.h"
#include "unit/ScratchFolder.h"

namespace {

using tidora::ConfReader;

std::string Objection(bool iniWaveSet, bool faultSet, bool topoDeform) {
    ConfReader conf("unused");
    conf.iniWaveSet = iniWaveSet;
    conf.faultSet = faultSet;
    conf.topoDeform = topoDeform;
    const PrintedText printed;
    conf.checkConsistency();
    CHECK(printed.Out().empty());
    return printed.Err();
}

const std::string kMakeAChoice =
    ErrorBlock("PARAMETER FILE IS INCONSISTENCY",
               {R"(You should make a choice between "setting Ini Wave Heigh" or setting "Fault Parameter".)"});

}  // namespace

TEST_CASE("the flags as constructed contradict each other") {
    const ConfReader conf("unused");
    CHECK_FALSE(conf.iniWaveSet);
    CHECK_FALSE(conf.faultSet);
    CHECK(conf.topoDeform);
    CHECK(Objection(false, false, true) == kMakeAChoice);
}

TEST_CASE("an initial wave and a fault together contradict each other, whatever the deformation flag") {
    CHECK(Objection(true, true, true) == kMakeAChoice);
    CHECK(Objection(true, true, false) == kMakeAChoice);
    CHECK(Objection(false, false, false) == kMakeAChoice);
}

TEST_CASE("a deformation without a fault is refused with two details") {
    CHECK(Objection(true, false, true) ==
          ErrorBlock("PARAMETER FILE IS INCONSISTENCY",
                     {"If you want to deform grand, You should make a choice setting \"Fault Parameter\".",
                      "Particular attention should be given to \"TopographyDeformation\"."}));
    CHECK(Objection(true, false, false).empty());
}

TEST_CASE("a fault alone is consistent, whatever the deformation flag") {
    CHECK(Objection(false, true, true).empty());
    CHECK(Objection(false, true, false).empty());
}

TEST_CASE("only an existing directory exists as a directory") {
    const ScratchFolder scratch;
    CHECK(ConfReader::IsExistDir(scratch.Path()));
    CHECK(ConfReader::IsExistDir(scratch.Path() + "/"));
    CHECK_FALSE(ConfReader::IsExistDir(scratch.Write("file", "x")));
    CHECK_FALSE(ConfReader::IsExistDir(scratch.At("missing")));
    CHECK_FALSE(ConfReader::IsExistDir(""));
}

TEST_CASE("every missing directory of a chain is created") {
    const ScratchFolder scratch;
    const CurrentFolder inside(scratch.Path());
    CHECK(ConfReader::MakeDir("out/a/b"));
    CHECK(ConfReader::IsExistDir("out"));
    CHECK(ConfReader::IsExistDir("out/a"));
    CHECK(ConfReader::IsExistDir("out/a/b"));
    CHECK(ConfReader::MakeDir("out/a/b"));  // and again: it is there
}

TEST_CASE("a trailing slash creates the directory before it") {
    const ScratchFolder scratch;
    const CurrentFolder inside(scratch.Path());
    CHECK(ConfReader::MakeDir("out/a/"));
    CHECK(ConfReader::IsExistDir("out/a"));
}

TEST_CASE("a leading slash is no separator") {
    const ScratchFolder scratch;
    CHECK(StartsWith(scratch.Path(), "/"));
    CHECK(ConfReader::MakeDir(scratch.At("x")));
    CHECK(ConfReader::IsExistDir(scratch.At("x")));
}

TEST_CASE("repeated slashes count as one") {
    const ScratchFolder scratch;
    CHECK(ConfReader::MakeDir(scratch.At("a//b")));
    CHECK(ConfReader::IsExistDir(scratch.At("a/b")));
}

TEST_CASE("a directory with a name of one character is not created") {
    const ScratchFolder scratch;
    const CurrentFolder inside(scratch.Path());
    CHECK_FALSE(ConfReader::MakeDir("x"));
    CHECK_FALSE(FileExists("x"));
    CHECK(ConfReader::MakeDir("."));  // it is there
}

TEST_CASE("an empty path is no directory") {
    CHECK_FALSE(ConfReader::MakeDir(""));
}

TEST_CASE("a file in the way stops the chain, and nothing is created behind it") {
    const ScratchFolder scratch;
    const std::string file = scratch.Write("file", "kept");
    CHECK_FALSE(ConfReader::MakeDir(file));
    CHECK_FALSE(ConfReader::MakeDir(file + "/below/it"));
    CHECK(FileBytes(file) == "kept");
}
