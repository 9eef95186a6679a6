#pragma once

#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/function/Function.hpp>

#include <stdexcept>

namespace support
{

/// Numbers or points as an array in double precision.
template<typename T>
std::shared_ptr<const tavrin::ValueArray<T>> stored(std::vector<T> values)
{
    return std::make_shared<tavrin::DefaultValueArray<T>>(std::move(values),
                                                          tavrin::Precision::Float64);
}

/// Points without cells.
template<std::size_t D>
std::shared_ptr<const tavrin::PointSet<D>> cloudOf(std::vector<tavrin::Tensor<double, D>> points)
{
    return std::make_shared<tavrin::PointCloud<D>>(stored(std::move(points)));
}

/// Points at 0, 1, 2, ... with the lines between them as cells.
inline std::shared_ptr<const tavrin::UniformGrid<1>> lineOf(std::size_t points)
{
    return std::make_shared<tavrin::UniformGrid<1>>(
        tavrin::UniformGrid<1>::Layout{.size = {points, 1, 1}, .spacing = {1.0}});
}

/// A function on the points of a domain, by default of a line with one point for each value.
template<typename T>
std::shared_ptr<const tavrin::Function<T>> fieldOf(
    std::vector<T> values, std::shared_ptr<const tavrin::Domain> domain = nullptr,
    std::vector<double> times = {})
{
    if (domain == nullptr)
        domain = lineOf(values.size());
    return tavrin::addData(std::move(domain), tavrin::PointSetBase::Points, std::move(values),
                           tavrin::Precision::Float64, std::move(times));
}

/// All values of a function, which must be of type T.
template<typename T>
std::vector<T> valuesOf(const tavrin::FunctionBase& function)
{
    const auto* const typed = dynamic_cast<const tavrin::Function<T>*>(&function);
    if (typed == nullptr)
        throw std::runtime_error("the values are of type " + function.valueTypeName());
    std::vector<T> scratch(typed->values()->size());
    const auto values = typed->values()->read(0, scratch);
    return {values.begin(), values.end()};
}

}
