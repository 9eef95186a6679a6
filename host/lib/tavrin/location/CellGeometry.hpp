#pragma once

#include <tavrin/domain/Box.hpp>
#include <tavrin/location/ShapeFunctions.hpp>
#include <tavrin/location/Tolerance.hpp>
#include <tavrin/value/Tensor.hpp>

namespace tavrin
{

/// The type that gives a cell its shape: for a subparametric type the linear one with the same corners.
TAVRIN_API CellType geometryTypeOf(CellType type);

/// The region of space that a cell covers: decides whether it contains a position, and where.
template<std::size_t D>
class TAVRIN_API CellGeometry
{
public:
    using Position = Tensor<double, D>;

    /// `type` is not `Invalid`; `vertices` has `numVerticesOf(type)` entries and is not copied. The cubes
    /// of coordinates should neither overflow nor underflow.
    ///
    /// `relativeRounding` is the rounding of coordinates relative to their size.
    CellGeometry(CellType type, const Position* vertices,
                 double relativeRounding = coordinateRounding);

    /// A box that holds every position in the cell. It may be larger than needed; it is NaN where a
    /// vertex is not finite.
    Box<D> bounds() const;

    /// Whether the cell contains a position by the rules of `locationTolerance`, and at which
    /// reference point. A cell whose extent in one of its own dimensions vanishes contains nothing.
    ///
    /// Simplices are inverted in closed form, other cells by Newton's method; in cells of fewer
    /// dimensions than the space the closest point is searched for. Where Newton's method finds no
    /// solution, and the shape of the cell does not prove that there is none, it is started again from
    /// every part of the cell, a quarter as long as the cell, whose control points enclose the
    /// position. Near points where the map has no inverse, such as where edges collapse, the cell
    /// contains what is no farther from it than rounding.
    bool contains(const Position& position, Reference& at) const;

private:
    /// How a search by Newton's method ended.
    enum class Outcome
    {
        Inside,
        NotFound,
        /// The cell is flat where the search started.
        Flat
    };

    /// The rounding of a position in the cell, as a distance: a bound for all of them, and that at a
    /// reference point.
    double largestRounding() const;
    double roundingAt(const Reference& at) const;
    bool simplexContains(const Position& position, Reference& at) const;
    bool multilinearContains(const Position& position, Reference& at) const
        requires(D >= 2);
    template<std::size_t N>
    bool generalContains(const Position& position, Reference& at) const;
    template<std::size_t N>
    bool searchParts(const Position& position, Reference& at) const;
    bool touches(const Position& position, Reference& at) const;
    template<std::size_t N>
    Outcome searchFrom(const Reference& start, const Position& position, Reference& at) const;
    bool isInside(const Reference& at, double inverseNorm, const Position& position) const;

    CellType mType;
    const Position* mVertices;
    double mRelativeRounding;
};

extern template class CellGeometry<1>;
extern template class CellGeometry<2>;
extern template class CellGeometry<3>;

}
