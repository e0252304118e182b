#include "FuzzInput.h"
#include "grid/GridFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const FuzzFile file(data, size);
    tidora::GridFile grid;
    const tidora::GridError error = tidora::ReadBinaryGrid(file.Path(), grid);
    const std::size_t promised = 28 + grid.values.size() * sizeof(float);
    if (error == tidora::GridError::None) {
        Require(grid.values.size() == grid.shape.Size() && promised <= size);
    } else {
        Require(error == tidora::GridError::BadCount && grid.values.empty());
    }
    return 0;
}
