#include "NestedRun.h"

const ExampleRun& NestedRun() {
    static const ExampleRun run({"tohoku2011/nested", "tohoku2011/data"}, "TdrConf.txt");
    return run;
}

const StartTimes& NestedStarts() {
    static const StartTimes starts = {90, 60, 30, 0, 120, 150, 180, 210, 240};
    return starts;
}

InputGrid NestedTopography(const std::string& region) {
    const std::string file = region == "parent" ? "tohoku_utm54_5400m.txt" : "tohoku_utm54_1800m.txt";
    return ReadInputGrid(NestedRun().copy.At("../data/" + file));
}

std::vector<Subfault> NestedSubfaults() {
    return MergedByPlace(ReadSubfaults(NestedRun().copy.At("../data/tohoku2011_satake_utm54.txt")));
}

SeriesGrid NestedGrid(const std::string& series, int start) {
    return ReadSeriesGrid(SeriesName(NestedRun().copy.At("out"), series, start));
}

SummedGrid NestedSum(const std::string& series) {
    return SumOfSeries(NestedRun().copy.At("out"), series, NestedStarts());
}
