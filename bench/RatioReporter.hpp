#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace tavrin::bench
{

/// Registers one side of a comparison: `contender` doing the work of `row`. All sides of a row run in turn in
/// one process, so that changes in the speed of the machine affect all of them.
template<typename Work>
void addContender(const std::string& row, const std::string& contender, const Work& work)
{
    benchmark::RegisterBenchmark((row + '|' + contender).c_str(),
                                 [work](benchmark::State& state)
                                 {
                                     for (auto _ : state)
                                         work();
                                 })
        ->Iterations(1)
        ->Repetitions(7)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
}

/// Prints a table with one line per row: the best time of each contender, and its ratio to that of tavrin.
class RatioReporter : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

private:
    struct Side
    {
        std::string contender;
        double milliseconds;
    };
    struct Row
    {
        std::string name;
        std::vector<Side> sides;
    };

    std::vector<Row> mRows;
};

}
