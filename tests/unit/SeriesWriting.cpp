#include "unit/SeriesWriting.h"

#include <cstddef>

#include "unit/GridReading.h"
#include "unit/PrintedText.h"

namespace {

float ValueAt(int k, int ix, int iy) {
    return static_cast<float>(1000 * k + 10 * ix + iy) + 0.25F;
}

}  // namespace

tidora::DynamicParam Series(const std::vector<Interval>& intervals) {
    tidora::DynamicParam series;
    for (const Interval& interval : intervals) {
        tidora::DYNAMIC_PARAM record;
        record.order = static_cast<int>(series.params.size());
        record.validTime = interval.start;
        record.riseTime = interval.length;
        series.params.push_back(record);
    }
    return series;
}

tidora::Region SeriesRegion(tidora::RType type, int nx, int ny, int snapshots) {
    tidora::PARAM_REGION param;
    param.no = 3;
    param.name = "bay";
    tidora::Region region(type, param);
    region.inFileName = "input.txt";
    region.Set2dStruct(nx, ny, 100.5, -20.0, 0.1);
    for (int k = 0; k < snapshots; ++k) {
        tidora::InstantVal2d snapshot;
        snapshot.Reset(static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny));
        for (int ix = 0; ix < nx; ++ix) {
            for (int iy = 0; iy < ny; ++iy) {
                snapshot.val[ix * ny + iy] = ValueAt(k, ix, iy);
            }
        }
        region.instants.push_back(snapshot);
    }
    return region;
}

std::string SnapshotBytes(int nx, int ny, int k) {
    std::vector<float> values;
    for (int iy = 0; iy < ny; ++iy) {
        for (int ix = 0; ix < nx; ++ix) {
            values.push_back(ValueAt(k, ix, iy));
        }
    }
    return BinaryGrid(100.5, -20.0, nx, ny, 0.1F, values);
}

SeriesWriting WriteSeries(tidora::Region& region, const std::string& dir, const tidora::DynamicParam& dp) {
    SeriesWriting writing;
    const PrintedText printed;
    writing.result = region.WriteBINDynamic(dir, dp);
    writing.out = printed.Out();
    writing.err = printed.Err();
    return writing;
}
