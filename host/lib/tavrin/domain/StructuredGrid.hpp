#pragma once

#include <tavrin/domain/CellComplex.hpp>

namespace tavrin
{

/// The number of points along each of the three index axes. The first axis runs fastest.
using GridSize = std::array<std::size_t, 3>;

/// A grid whose points and cells are numbered along three index axes. An axis with one point does
/// not count: a grid of n x m x 1 points has quads, one of n x 1 x 1 points lines.
template<std::size_t D>
class TAVRIN_API StructuredGrid : public EmbeddedCellComplex<D>
{
public:
    const GridSize& size() const { return mSize; }

    std::size_t numPoints() const final { return mSize[0] * mSize[1] * mSize[2]; }
    std::size_t numCells() const final { return mNumCells; }
    CellType cellType(std::size_t) const final { return mCellType; }

    /// Vertices in the order of the linear cell types.
    Cell cell(std::size_t index) const final;

    TopologyType topologyType() const final { return TopologyType::Structured; }

    /// The index along each axis of a point.
    GridSize pointIndices(std::size_t point) const
    {
        return {point % mSize[0], point / mSize[0] % mSize[1], point / mSize[0] / mSize[1]};
    }

    bool equals(const Domain& other) const override;

    static const TypeId<StructuredGrid>& classTypeId()
    {
        return RTTI::typeId<StructuredGrid, EmbeddedCellComplex<D>>(
            "StructuredGrid<" + std::to_string(D) + ">", std::to_string(D) + "-D structured grid");
    }

protected:
    /// Every axis needs at least one point; a grid without points has 0 on every axis.
    explicit StructuredGrid(const GridSize& size);

    /// Of the corner points alone: all there is to see on a grid whose faces are flat.
    PointSetBase::BoundingBox boundingBoxOfCorners() const;

private:
    GridSize mSize;
    std::size_t mNumCells = 1;
    CellType mCellType = CellType::Points;
    /// The axes with more than one point, their number of cells and the step to the next point.
    struct Axis
    {
        std::size_t cells;
        std::size_t stride;
    };
    std::array<Axis, 3> mAxes{};
    std::size_t mNumAxes = 0;
};

extern template class StructuredGrid<1>;
extern template class StructuredGrid<2>;
extern template class StructuredGrid<3>;

}
