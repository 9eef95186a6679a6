#include <tavrin/location/CellFilter.hpp>

#include <tavrin/location/Inverse.hpp>
#include <tavrin/location/Tolerance.hpp>

namespace tavrin
{

template<std::size_t D>
void CellFilter<D>::writeBox(const Single& lower, const Single& upper, float* numbers,
                             std::size_t row)
{
    for (std::size_t i = 0; i < D; ++i)
    {
        numbers[lowerRow(i) * row] = lower[i];
        numbers[upperRow(i) * row] = upper[i];
    }
}

/// There are D groups of D + 1 numbers. Weight i + 1 of the simplex is the first number of group i plus
/// the dot product of the others with the position.
template<std::size_t D>
void CellFilter<D>::writeSimplex(const Position* vertices, float* numbers, std::size_t row)
{
    const Position& start = vertices[0];
    Position reach;
    for (std::size_t i = 0; i < D; ++i)
        reach[i] = std::abs(start[i]);
    Columns<D> edges;
    for (std::size_t i = 0; i < D; ++i)
    {
        const Position& end = vertices[i + 1];
        edges[i] = end - start;
        for (std::size_t j = 0; j < D; ++j)
            reach[j] = std::max(reach[j], std::abs(end[j]));
    }
    const Inverse<D> inverse(edges);
    double magnitude = 0.0;
    double largest = 0.0;
    std::array<std::array<double, D + 1>, D> weights;
    for (std::size_t i = 0; i < D; ++i)
    {
        const Position& slopes = inverse.row(i);
        weights[i][0] = -dot(slopes, start);
        magnitude += std::abs(weights[i][0]);
        for (std::size_t j = 0; j < D; ++j)
        {
            weights[i][j + 1] = slopes[j];
            magnitude += std::abs(slopes[j]) * reach[j];
            largest = std::max(largest, std::abs(slopes[j]));
        }
    }
    // A sum of D + 1 products in single precision, of numbers that are themselves rounded, is off by
    // fewer than 8 roundings of the sum of magnitudes.
    static_assert(largestTolerance < 0.5 * static_cast<double>(margin));
    const double error = 8.0 * std::numeric_limits<float>::epsilon() * magnitude;
    const bool isReliable = inverse.isReliable() && error < 0.5 * static_cast<double>(margin) &&
                            largest < static_cast<double>(std::numeric_limits<float>::max());
    for (std::size_t i = 0; i < D; ++i)
        for (std::size_t j = 0; j <= D; ++j)
        {
            // The numbers of a simplex that cannot be filtered give every position the weights of its
            // center.
            const double everywhere = j == 0 ? 1.0 / static_cast<double>(D + 1) : 0.0;
            *numbers = static_cast<float>(isReliable ? weights[i][j] : everywhere);
            numbers += row;
        }
}

template class CellFilter<1>;
template class CellFilter<2>;
template class CellFilter<3>;

}
