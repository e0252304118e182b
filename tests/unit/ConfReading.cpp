#include "unit/ConfReading.h"

#include "unit/ExpectedText.h"
#include "unit/PrintedText.h"
#include "unit/ScratchFolder.h"

ConfReading ReadConfFile(const std::string& path) {
    ConfReading reading{false, tidora::ConfReader(path), "", ""};
    const PrintedText printed;
    reading.success = reading.conf.readParam();
    reading.out = printed.Out();
    reading.err = printed.Err();
    return reading;
}

ConfReading ReadConf(const std::string& text) {
    const ScratchFolder folder;
    return ReadConfFile(folder.Write("conf.txt", text));
}

std::string Pairs(const std::vector<std::string>& values) {
    std::string text;
    for (const std::string& value : values) {
        text += "caption\n" + value + "\n";
    }
    return text;
}

std::vector<std::string> GlobalValues() {
    return {"spare", "out/dir", "0.25", "7", "3", "1", "data/fault.txt", "2", "1.5", "2500.5"};
}

std::string GlobalPairs(const std::string& count) {
    return Pairs(GlobalValues()) + Pairs({count});
}

std::string RegionPairs(const std::string& no) {
    return Pairs({no, "name" + no, "4", "1", "topo" + no + ".txt"});
}

std::string EchoOf(const tidora::ConfReader& conf, const std::vector<std::string>& values) {
    std::string text = ">>>>>>>>> Read Conf File : " + conf.confFile + "\n";
    for (const std::string& value : values) {
        text += value + "\n";
    }
    return text;
}

std::string ConfErrorBlock() {
    return std::string(kFrameLine) +
           "\nERROR:PARAMETER FILE IS INCONSISTENCY\n"
           "  ERROR-DETAIL:Abnormal action at Reading Parameter File Method.\n" +
           std::string(kFrameLine) + "\n";
}
