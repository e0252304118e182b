#include "unit/GridReading.h"

#include "unit/ExpectedText.h"
#include "unit/PrintedText.h"
#include "unit/ScratchFolder.h"

namespace {

tidora::PARAM_REGION RecordOf(const std::string& path) {
    tidora::PARAM_REGION param;
    param.topoFile = path;
    return param;
}

template <class Value>
void Append(std::string& bytes, const Value& value) {
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

}  // namespace

GridReading::GridReading(const std::string& path) : region(tidora::RTYPE_TOPOGRAPHY, RecordOf(path)) {
    const PrintedText printed;
    // NOLINTNEXTLINE(cppcoreguidelines-prefer-member-initializer): after the capture has begun
    result = region.ReadFile();
    out = printed.Out();
    err = printed.Err();
}

GridReading::~GridReading() {
    region.FreeVecMem();
}

GridReading ReadGrid(std::string_view bytes, const std::string& name) {
    const ScratchFolder folder;
    return GridReading(folder.Write(name, bytes));
}

std::string BinaryGrid(double orgX, double orgY, std::int32_t nx, std::int32_t ny, float dx,
                       const std::vector<float>& values) {
    std::string bytes;
    Append(bytes, orgX);
    Append(bytes, orgY);
    Append(bytes, nx);
    Append(bytes, ny);
    Append(bytes, dx);
    for (const float value : values) {
        Append(bytes, value);
    }
    return bytes;
}

std::string CannotOpenBlock(const std::string& path) {
    return ErrorBlock("REGION OBJECT METHOD",
                      {"Abnormal action at Reading File Method.", "Can not open file.",
                       "Particular attention should be given to \"Region File\".", "Region File > " + path});
}

std::string BadHeaderBlock(const std::string& path) {
    return ErrorBlock("REGION OBJECT METHOD", {"Abnormal action at Reading File Method.",
                                               "You should check the Format of Region File.", "Region File > " + path});
}

std::string BadCountBlock(const std::string& path, const std::string& nx, const std::string& ny) {
    return ErrorBlock("REGION OBJECT METHOD",
                      {"Abnormal action at Reading File Method.", "You should check the Format of Region File.",
                       "Region File  > " + path, "ALL DATA NUM > 0", "          NX > " + nx, "          NY > " + ny});
}

std::string UnequalSpacingBlock(const std::string& path, const std::string& dx, const std::string& dy) {
    return ErrorBlock("REGION OBJECT METHOD",
                      {"Abnormal action at Reading File Method.", "You should check the Format of Region File.",
                       "Region File  > " + path, "          DX > " + dx, "          DY > " + dy});
}

std::string GridHeading(const std::string& path) {
    return "\n>>>>>>>>>>>>>>>>>> Region Input:" + path + "\n";
}
