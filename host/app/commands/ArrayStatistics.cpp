#include "ArrayStatistics.hpp"

#include <tavrin/base/Processors.hpp>
#include <tavrin/base/TeamFailure.hpp>
#include <tavrin/function/visit.hpp>

#include <array>
#include <cmath>

namespace tavrin::app
{

namespace
{

constexpr std::size_t valuesPerBlock = 512;

/// Blocks that one thread works through at a time, so that threads seldom meet.
constexpr int blocksAtOnce = 64;

/// For values with more components than any matrix has, only the norm is examined.
constexpr std::size_t maximumComponents = 16;

template<typename T>
inline constexpr std::size_t examinedComponents = T::size <= maximumComponents ? T::size : 0;

/// The number of values whose components have sums of their own, for vector code.
constexpr std::size_t lanes = 4;

/// The statistics of the components of values: `components` numbers each, one after the other.
template<std::size_t components>
TAVRIN_FOR_SEVERAL_PROCESSORS void addNumbers(const double* numbers, std::size_t count,
                                              NumberStatistics* result)
{
    constexpr std::size_t width = components * lanes;
    constexpr double infinity = std::numeric_limits<double>::infinity();
    std::array<double, width> least;
    std::array<double, width> greatest;
    std::array<double, width> sum{};
    std::array<double, width> finite{};
    std::array<double, width> notANumber{};
    std::array<double, width> infinite{};
    least.fill(infinity);
    greatest.fill(-infinity);
    const auto addTo = [&](std::size_t lane, double number)
    {
        const bool isFinite = std::abs(number) < infinity;
        least[lane] = isFinite && number < least[lane] ? number : least[lane];
        greatest[lane] = isFinite && number > greatest[lane] ? number : greatest[lane];
        sum[lane] += isFinite ? number : 0.0;
        finite[lane] += isFinite ? 1.0 : 0.0;
        notANumber[lane] += number != number ? 1.0 : 0.0;
        infinite[lane] += std::abs(number) == infinity ? 1.0 : 0.0;
    };
    const std::size_t size = count * components;
    const std::size_t whole = size / width * width;
    for (std::size_t first = 0; first < whole; first += width)
        for (std::size_t lane = 0; lane < width; ++lane)
            addTo(lane, numbers[first + lane]);
    for (std::size_t i = whole; i < size; ++i)
        addTo(i - whole, numbers[i]);
    for (std::size_t lane = 0; lane < width; ++lane)
    {
        result[lane % components].add(
            {least[lane], greatest[lane], sum[lane], static_cast<std::size_t>(finite[lane]),
             static_cast<std::size_t>(notANumber[lane]), static_cast<std::size_t>(infinite[lane])});
    }
}

/// The statistics of at most `valuesPerBlock` values.
template<typename T>
struct BlockStatistics
{
    std::array<NumberStatistics, examinedComponents<T>> components;
    NumberStatistics norm;

    void add(const BlockStatistics& other)
    {
        for (std::size_t c = 0; c < components.size(); ++c)
            components[c].add(other.components[c]);
        norm.add(other.norm);
    }

    void addBlock(std::span<const T> values)
    {
        if (values.empty())
            return;
        if constexpr (examinedComponents<T> > 0)
            addNumbers<T::size>(values.front().begin(), values.size(), components.data());
        if constexpr (T::rank > 0)
        {
            std::array<double, valuesPerBlock> norms;
            std::ranges::transform(values, norms.begin(),
                                   [](const T& value) { return tavrin::norm(value); });
            addNumbers<1>(norms.data(), values.size(), &norm);
        }
    }
};

/// The values of a block that are valid, without a gap.
template<typename T>
std::span<const T> validValues(std::span<const T> values, std::span<const std::uint8_t> mask,
                               std::span<T> scratch)
{
    std::size_t kept = 0;
    for (std::size_t i = 0; i < values.size(); ++i)
        if (mask[i] != 0)
            scratch[kept++] = values[i];
    return scratch.first(kept);
}

/// Blocks have the same values and are added in the same order for every number of threads.
template<typename T>
BlockStatistics<T> stepStatistics(const ValueArray<T>& values, std::span<const std::uint8_t> mask,
                                  const volatile bool& abortFlag)
{
    const std::size_t numBlocks = (values.size() + valuesPerBlock - 1) / valuesPerBlock;
    const auto numGroups = (numBlocks + blocksAtOnce - 1) / blocksAtOnce;
    std::vector<BlockStatistics<T>> groups(numGroups);
    TeamFailure failure;
#pragma omp parallel for schedule(dynamic) if (numGroups > 1)
    for (std::size_t group = 0; group < numGroups; ++group)
        failure.guard(
            [&]
            {
                std::vector<T> scratch(valuesPerBlock);
                const std::size_t end = std::min((group + 1) * blocksAtOnce, numBlocks);
                for (std::size_t block = group * blocksAtOnce; block < end && !abortFlag; ++block)
                {
                    const std::size_t first = block * valuesPerBlock;
                    const std::size_t count = std::min(valuesPerBlock, values.size() - first);
                    auto read = values.read(first, std::span(scratch).first(count));
                    if (!mask.empty())
                        read = validValues(read, mask.subspan(first, count), std::span(scratch));
                    groups[group].addBlock(read);
                }
            });
    failure.rethrow();
    if (abortFlag)
        throw io::Aborted();
    BlockStatistics<T> all;
    for (const BlockStatistics<T>& group : groups)
        all.add(group);
    return all;
}

/// Names and indices of the components that are examined. A matrix that is stored as six components is
/// symmetric, and its upper half is enough.
template<typename T>
std::vector<std::pair<std::string, std::size_t>> componentsOf(std::size_t stored)
{
    const std::string axes = "xyzw";
    std::vector<std::pair<std::string, std::size_t>> components;
    for (std::size_t c = 0; c < examinedComponents<T>; ++c)
    {
        if constexpr (T::rank == 2)
        {
            constexpr std::size_t columns = T::extent(1);
            const bool isRepeated = stored < T::size && c / columns > c % columns;
            if (!isRepeated)
                components.emplace_back(std::string{axes[c / columns], axes[c % columns]}, c);
        }
        else
            components.emplace_back(T::rank == 0 ? "" : std::string(1, axes[c]), c);
    }
    return components;
}

template<typename T>
void addFunction(const Function<T>& function, ArrayStatistics& result,
                 const volatile bool& abortFlag)
{
    for (std::size_t step = 0; step < function.numTimeSteps(); ++step)
    {
        const auto values = function.stepValues(step);
        std::span<const std::uint8_t> mask;
        if (function.validity() != nullptr)
            mask = std::span(*function.validity()).subspan(step * values->size(), values->size());
        const BlockStatistics<T> found = stepStatistics(*values, mask, abortFlag);
        result.values += values->size();
        result.invalid += static_cast<std::size_t>(std::ranges::count(mask, 0));
        const auto examined = componentsOf<T>(result.array.components);
        result.components.resize(examined.size());
        result.componentNames.resize(examined.size());
        for (std::size_t i = 0; i < examined.size(); ++i)
        {
            result.componentNames[i] = examined[i].first;
            result.components[i].add(found.components[examined[i].second]);
        }
        if constexpr (T::rank > 0)
        {
            if (!result.norm)
                result.norm.emplace();
            result.norm->add(found.norm);
        }
    }
}

/// Reports progress as long as it lives.
class OpenProgress
{
public:
    OpenProgress(ProgressObserver& observer, unsigned long total)
        : mObserver(observer), mReport{"Statistics", total, true, mCounter}
    {
        mObserver.opened(mReport);
    }
    OpenProgress(const OpenProgress&) = delete;
    OpenProgress& operator=(const OpenProgress&) = delete;
    ~OpenProgress() { mObserver.closed(mReport); }

    void advance() { mCounter.advance(); }

private:
    ProgressObserver& mObserver;
    ProgressCounter mCounter;
    ProgressReport mReport;
};

}

void NumberStatistics::add(const NumberStatistics& others)
{
    least = std::min(least, others.least);
    greatest = std::max(greatest, others.greatest);
    sum += others.sum;
    finite += others.finite;
    notANumber += others.notANumber;
    infinite += others.infinite;
}

std::vector<ArrayStatistics> arrayStatistics(const io::DataReference& reference,
                                             const std::vector<io::FileInfo::Array>& arrays,
                                             io::Loader& loader, ProgressObserver& observer,
                                             const volatile bool& abortFlag)
{
    std::vector<ArrayStatistics> all;
    for (const io::FileInfo::Array& array : arrays)
        if (!array.valueType.empty())
            all.push_back({array, 0, 0, 0, {}, {}, {}});
    const std::vector<double> times = loader.timesOf(reference);
    const std::size_t numSteps = std::max<std::size_t>(1, times.size());
    OpenProgress progress(observer, numSteps * all.size());
    for (std::size_t step = 0; step < numSteps; ++step)
    {
        io::DataReference one = reference;
        if (times.size() > 1)
            one.time = times[step];
        // Arrays of one file share the grid of the one before.
        std::vector<std::shared_ptr<const FunctionBase>> functions;
        for (ArrayStatistics& statistics : all)
        {
            one.array = statistics.array.name;
            one.on = statistics.array.association;
            progress.advance();
            try
            {
                functions = loader.loadFunctions(one);
            }
            catch (const usage_error&)
            {
                if (step == 0)
                    throw;
                continue;
            }
            ++statistics.steps;
            for (const auto& function : functions)
                visitFunction<ValueTypes>(*function, [&](const auto& typed)
                                          { addFunction(typed, statistics, abortFlag); });
        }
    }
    return all;
}

}
