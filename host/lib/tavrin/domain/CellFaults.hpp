#pragma once

#include <algorithm>
#include <cstddef>
#include <string>

namespace tavrin
{

/// The number of cells with a fault, and the first of them.
struct CellFaults
{
    std::size_t count = 0;
    std::size_t first = static_cast<std::size_t>(-1);

    void add(std::size_t cell) { add({1, cell}); }
    void add(const CellFaults& others)
    {
        count += others.count;
        first = std::min(first, others.first);
    }
};

/// Throws an `Error` that says how many cells have the fault, if there are any.
template<typename Error>
void complainIfAny(const CellFaults& faults, const std::string& fault)
{
    if (faults.count > 0)
        throw Error(std::to_string(faults.count) + (faults.count == 1 ? " cell " : " cells ") +
                    fault + ", the first is cell " + std::to_string(faults.first));
}

}
