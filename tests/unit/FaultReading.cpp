#include "unit/FaultReading.h"

#include "unit/ExpectedText.h"
#include "unit/PrintedText.h"
#include "unit/ScratchFolder.h"

void FaultReading::Read() {
    const PrintedText printed;
    result = fault.ReadFile();
    out = printed.Out();
    err = printed.Err();
}

FaultReading ReadFaultFile(const std::string& path) {
    FaultReading reading;
    reading.fault = tidora::Fault(tidora::PARAM_FAULT{1, path});
    reading.Read();
    return reading;
}

FaultReading ReadFault(const std::string& text) {
    const ScratchFolder folder;
    return ReadFaultFile(folder.Write("fault.txt", text));
}

std::string FaultHeading(const FaultReading& reading) {
    return "\n>>>>>>>>>>>>>>>>>> Fault Input:" + reading.fault.fileName + "\n";
}

std::string FaultFormatBlock() {
    return ErrorBlock("FAULT OBJECT METHOD",
                      {"Abnormal action at Reading File Method.", "You should check the Format of Fault File."});
}
