#pragma once

#include <tavrin/domain/CellType.hpp>
#include <tavrin/location/FourFloats.hpp>
#include <tavrin/value/Tensor.hpp>

#include <cstdint>

namespace tavrin
{

/// Rules out most cells of a leaf of a tree that do not contain a position, without reading their
/// vertices: by their boxes or, where all cells are simplices of the dimension of the space, by the
/// linear functions that give the position's weights. It works in single precision and never rules out
/// a cell that contains the position.
///
/// The numbers of all cells of a leaf lie side by side: one row for the first number of each cell, the
/// next row for the second, and so on. Rows are read four numbers at a time, so that up to
/// `overread` numbers after the last one must be readable.
template<std::size_t D>
class CellFilter
{
public:
    using Position = Tensor<double, D>;
    using Single = std::array<float, D>;

    static constexpr std::size_t overread = 3;

    /// For cells of one type, or `Invalid` for cells of different types.
    explicit CellFilter(CellType commonType)
        : mAreSimplices((commonType == CellType::Triangles && D == 2) ||
                        (commonType == CellType::Tetrahedra && D == 3))
    {
    }

    bool areSimplices() const { return mAreSimplices; }

    /// Numbers per cell.
    std::size_t size() const { return mAreSimplices ? D * (D + 1) : 2 * D; }

    /// The rows of the lower and the upper bounds of boxes along an axis.
    static constexpr std::size_t lowerRow(std::size_t axis) { return 2 * axis; }
    static constexpr std::size_t upperRow(std::size_t axis) { return 2 * axis + 1; }

    /// Writes the numbers of a cell with a box, at a distance of `row` from each other.
    static void writeBox(const Single& lower, const Single& upper, float* numbers, std::size_t row);

    /// Writes the numbers of a simplex. Its vertices are relative to the origin of the leaf.
    static void writeSimplex(const Position* vertices, float* numbers, std::size_t row);

    /// One bit for each of up to 31 cells whose box holds the position.
    static std::uint32_t boxesAt(const Single& position, const float* numbers, std::uint32_t count)
    {
        std::uint32_t bits = 0;
        for (std::uint32_t lane = 0; lane < count; lane += 4)
        {
            detail::FourIntegers mask{-1, -1, -1, -1};
            for (std::size_t i = 0; i < D; ++i)
                mask &= (detail::loadFour(numbers + lowerRow(i) * count + lane) <= position[i]) &
                        (detail::loadFour(numbers + upperRow(i) * count + lane) >= position[i]);
            bits |= detail::bitsOf(mask) << lane;
        }
        return bits & ((1U << count) - 1);
    }

    /// One bit for each simplex that may contain the position, which is relative to the same origin.
    static std::uint32_t simplicesAt(const Single& position, const float* numbers,
                                     std::uint32_t count)
    {
        std::uint32_t bits = 0;
        for (std::uint32_t lane = 0; lane < count; lane += 4)
        {
            const float* row = numbers + lane;
            detail::FourIntegers mask{-1, -1, -1, -1};
            detail::FourFloats sum{};
            for (std::size_t i = 0; i < D; ++i)
            {
                detail::FourFloats weight = detail::loadFour(row);
                row += count;
                for (std::size_t j = 0; j < D; ++j)
                {
                    weight += position[j] * detail::loadFour(row);
                    row += count;
                }
                mask &= weight >= -margin;
                sum += weight;
            }
            mask &= sum <= 1.0F + margin;
            bits |= detail::bitsOf(mask) << lane;
        }
        return bits & ((1U << count) - 1);
    }

private:
    /// How far outside of 0 ... 1 a weight may lie. One half of it is for the tolerance of cells,
    /// which is at most `largestTolerance`, the other for rounding: simplices whose weights may be off
    /// by more are not filtered.
    static constexpr float margin = 0x1p-8F;

    bool mAreSimplices;
};

extern template class CellFilter<1>;
extern template class CellFilter<2>;
extern template class CellFilter<3>;

}
