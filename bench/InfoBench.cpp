#include "InfoBench.hpp"

#include "RatioReporter.hpp"

#include <tavrin/algorithm/AlgorithmRun.hpp>
#include <tavrin/base/LargeVector.hpp>
#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/function/Function.hpp>
#include <tavrin/value/WrappedValueArray.hpp>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace tavrin::bench
{

namespace
{

enum class Order
{
    Random,
    Smooth
};

template<typename Stored>
class Input
{
public:
    Input(const GridSize& size, Order order) : mData(3 * size[0] * size[1] * size[2])
    {
        for (std::size_t i = 0; i < mData.size(); ++i)
            mData[i] = static_cast<Stored>(order == Order::Random
                                               ? static_cast<double>(i * 2654435761U % 1000003U)
                                               : std::sin(1e-6 * static_cast<double>(i)));
        auto grid = std::make_shared<UniformGrid<3>>(
            UniformGrid<3>::Layout{.size = size, .spacing = Vector3(1.0, 1.0, 1.0)});
        mFunction = std::make_shared<Function<Vector3>>(
            std::move(grid), PointSetBase::Points,
            std::make_shared<WrappedValueArray<Vector3, Stored>>(mData.data(), numValues(), 3,
                                                                 nullptr),
            std::vector<double>{}, "v");
    }

    std::size_t numValues() const { return mData.size() / 3; }
    const LargeVector<Stored>& data() const { return mData; }
    const std::shared_ptr<const FunctionBase>& function() const { return mFunction; }

private:
    LargeVector<Stored> mData;
    std::shared_ptr<const FunctionBase> mFunction;
};

void runInfo(const std::shared_ptr<const FunctionBase>& field, bool median)
{
    AlgorithmRun run(RegistrationService<AlgorithmFactory>::getInstance(), "Field/Info");
    run.connect("Field", field);
    run.setText("Compute min, max, average", median ? "false" : "true");
    run.setText("Compute median", median ? "true" : "false");
    const volatile bool abortFlag = false;
    run.execute(abortFlag);
    benchmark::DoNotOptimize(run.infoLog());
}

/// Reads everything once, with one addition per component.
template<typename Stored>
void read(const LargeVector<Stored>& data)
{
    constexpr std::size_t lanes = 32;
    std::array<Stored, lanes> sums{};
    for (std::size_t i = 0; i + lanes <= data.size(); i += lanes)
        for (std::size_t lane = 0; lane < lanes; ++lane)
            sums[lane] += data[i + lane];
    benchmark::DoNotOptimize(sums);
}

void selectFromCopies(const Input<double>& input)
{
    std::vector<double> component(input.numValues());
    for (std::size_t c = 0; c < 3; ++c)
    {
        for (std::size_t i = 0; i < component.size(); ++i)
            component[i] = input.data()[3 * i + c];
        const auto middle = component.begin() + static_cast<std::ptrdiff_t>(component.size() / 2);
        std::nth_element(component.begin(), middle, component.end());
        benchmark::DoNotOptimize(*middle);
    }
}

template<typename Stored>
void addExtremesRow(const char* precision)
{
    const auto large = std::make_shared<Input<Stored>>(GridSize{256, 256, 256}, Order::Random);
    const auto row = fmt::format("extremes of 16M 3-vectors, {}, 1 thread", precision);
    addContender(row, "tavrin", [=] { runInfo(large->function(), false); });
    addContender(row, "bandwidth", [=] { read(large->data()); });
}

void addMedianRow(Order order)
{
    const auto input = std::make_shared<Input<double>>(GridSize{250, 200, 200}, order);
    const auto row = fmt::format("median of 10M 3-vectors, {} order",
                                 order == Order::Random ? "random" : "smooth");
    addContender(row, "tavrin", [=] { runInfo(input->function(), true); });
    addContender(row, "nth_element", [=] { selectFromCopies(*input); });
}

}

void addInfoRows()
{
    addExtremesRow<double>("float64");
    addExtremesRow<float>("float32");
    addMedianRow(Order::Random);
    addMedianRow(Order::Smooth);
}

}
