#pragma once

#include <tavrin/domain/Box.hpp>
#include <tavrin/location/ShapeFunctions.hpp>
#include <tavrin/value/Tensor.hpp>

namespace tavrin
{

/// The type whose shape a cell has: that of the corners where it is subparametric.
TAVRIN_API CellType geometryTypeOf(CellType type);

/// A cell as a part of space: what it takes to find where in it a position lies.
template<std::size_t D>
class TAVRIN_API CellGeometry
{
public:
    using Position = Tensor<double, D>;

    /// `type` is not `Invalid`. `vertices` are as many as the type has and are not copied. Coordinates
    /// should be moderate numbers, whose cubes neither overflow nor vanish.
    CellGeometry(CellType type, const Position* vertices);

    /// A box that holds every position that the cell contains; it may hold others, and is not a
    /// number where the vertices are not.
    Box<D> bounds() const;

    /// Whether the cell contains a position by the rules of `locationTolerance`, and at which
    /// reference point. A cell whose extent in one of its own dimensions vanishes contains nothing.
    ///
    /// Simplices are inverted in closed form, others by Newton's method; in cells of fewer dimensions
    /// than the space it looks for the closest point. Where it finds nothing, and the shape of the
    /// cell does not prove that there is nothing, it starts again in every part of the cell, a
    /// quarter as long, that may hold the position.
    bool contains(const Position& position, Reference& at) const;

private:
    /// The distance by which positions may be off for want of digits.
    double rounding() const;
    bool simplexContains(const Position& position, Reference& at) const;
    bool multilinearContains(const Position& position, Reference& at) const
        requires(D >= 2);
    template<std::size_t N>
    bool generalContains(const Position& position, Reference& at) const;
    template<std::size_t N>
    bool searchParts(const Position& position, Reference& at) const;
    template<std::size_t N>
    bool searchFrom(const Reference& start, const Position& position, Reference& at) const;
    bool isInside(const Reference& at, double inverseNorm, const Position& position) const;

    CellType mType;
    const Position* mVertices;
};

extern template class CellGeometry<1>;
extern template class CellGeometry<2>;
extern template class CellGeometry<3>;

}
