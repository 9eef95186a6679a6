#pragma once

#include <tavrin/algorithm/Progress.hpp>
#include <tavrin/io/Loader.hpp>

#include <limits>

namespace tavrin::app
{

/// Bounds, mean and counts of numbers. Bounds and mean are those of the finite ones.
struct NumberStatistics
{
    double least = std::numeric_limits<double>::infinity();
    double greatest = -std::numeric_limits<double>::infinity();
    double sum = 0.0;
    std::size_t finite = 0;
    std::size_t notANumber = 0;
    std::size_t infinite = 0;

    /// NaN where no number is finite.
    double mean() const { return sum / static_cast<double>(finite); }

    void add(const NumberStatistics& others);
};

/// The statistics of an array over all its blocks and time steps, without the values that are marked as
/// invalid.
struct ArrayStatistics
{
    io::FileInfo::Array array;
    /// The number of steps that have the array.
    std::size_t steps = 0;
    std::size_t values = 0;
    std::size_t invalid = 0;
    /// The statistics of each component. A matrix that is stored as six components has six. Empty for
    /// vectors with many components, which have statistics of the norm only.
    std::vector<std::string> componentNames;
    std::vector<NumberStatistics> components;
    /// Not set for scalars.
    std::optional<NumberStatistics> norm;
};

/// The statistics of all arrays that are fields, read by all threads one step after the other. Memory
/// holds one array of one step at a time. The results do not depend on the number of threads. An array
/// may be missing in steps after the first. Throws what the loader throws, and `io::Aborted`.
std::vector<ArrayStatistics> arrayStatistics(const io::DataReference& reference,
                                             const std::vector<io::FileInfo::Array>& arrays,
                                             io::Loader& loader, ProgressObserver& observer,
                                             const volatile bool& abortFlag);

}
