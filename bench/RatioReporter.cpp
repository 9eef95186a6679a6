#include "RatioReporter.hpp"

#include <fmt/format.h>

#include <algorithm>

namespace tavrin::bench
{

void RatioReporter::ReportRuns(const std::vector<Run>& runs)
{
    for (const Run& run : runs)
    {
        if (run.run_type != Run::RT_Iteration || run.error_occurred)
            continue;
        const std::string& name = run.run_name.function_name;
        const auto bar = name.rfind('|');
        const std::string rowName = name.substr(0, bar);
        const std::string contender = name.substr(bar + 1);
        auto row = std::ranges::find(mRows, rowName, &Row::name);
        if (row == mRows.end())
            row = mRows.insert(mRows.end(), {rowName, {}});
        auto side = std::ranges::find(row->sides, contender, &Side::contender);
        const double time = run.GetAdjustedRealTime();
        if (side == row->sides.end())
            row->sides.push_back({contender, time});
        else
            side->milliseconds = std::min(side->milliseconds, time);
    }
}

void RatioReporter::Finalize()
{
    fmt::print("{:<42}{:>12}   {}\n", "work", "tavrin", "others, and their time as a multiple");
    // Rows arrive in the order of their first run, which is shuffled.
    std::ranges::sort(mRows, {}, &Row::name);
    for (Row& row : mRows)
    {
        std::ranges::sort(row.sides, {}, &Side::contender);
        const auto own = std::ranges::find(row.sides, "tavrin", &Side::contender);
        if (own == row.sides.end())
            continue;
        fmt::print("{:<42}{:>9.1f} ms", row.name, own->milliseconds);
        for (const Side& side : row.sides)
            if (&side != &*own)
                fmt::print("   {} {:.1f} ms ({:.2f} x)", side.contender, side.milliseconds,
                           side.milliseconds / own->milliseconds);
        fmt::print("\n");
    }
}

}
