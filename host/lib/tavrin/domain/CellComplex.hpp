#pragma once

#include <tavrin/domain/CellLocator.hpp>
#include <tavrin/domain/PointSet.hpp>

#include <array>
#include <cassert>

namespace tavrin
{

/// One cell: its type and the indices of its vertices in the point set.
class Cell
{
public:
    /// At most `maximumVertices` vertices.
    Cell(CellType type, std::span<const std::size_t> vertices)
        : mType(type), mNumVertices(vertices.size())
    {
        assert(vertices.size() <= maximumVertices);
        std::ranges::copy(vertices, mVertices.begin());
    }

    CellType type() const { return mType; }
    std::size_t numVertices() const { return mNumVertices; }

    /// The point index of vertex k.
    std::size_t pointIndex(std::size_t k) const { return mVertices[k]; }

    /// Valid as long as the cell, so that it is not available for temporary cells.
    std::span<const std::size_t> pointIndices() const& { return {mVertices.data(), mNumVertices}; }
    std::span<const std::size_t> pointIndices() const&& = delete;

private:
    CellType mType;
    std::size_t mNumVertices;
    std::array<std::size_t, maximumVertices> mVertices;
};

/// A domain made of cells.
class TAVRIN_API CellComplex : public virtual Domain
{
public:
    virtual std::size_t numCells() const = 0;

    /// The cell at an index below `numCells()`.
    virtual Cell cell(std::size_t index) const = 0;
    virtual CellType cellType(std::size_t index) const = 0;

    virtual TopologyType topologyType() const = 0;

    std::size_t numElements(const DomainPart& part) const override;

    static const TypeId<CellComplex>& classTypeId()
    {
        return typeId<CellComplex, Domain>("CellComplex", "grid");
    }
};

/// A cell complex whose vertices are points with D coordinates: a grid.
template<std::size_t D>
class TAVRIN_API EmbeddedCellComplex : public PointSet<D>, public CellComplex
{
public:
    /// The point set that the cells' vertices belong to.
    const PointSet<D>& pointSet() const { return *this; }

    virtual StructuringType structuringType() const = 0;

    /// Makes the locator of a grid.
    using MakeLocator = std::shared_ptr<const CellLocator<D>>(const EmbeddedCellComplex& grid);

    /// The locator that the first call makes by `make`, for the code that locates positions. Throws what
    /// `make` throws; the next call then tries again. May be called from several threads at once.
    const CellLocator<D>& locator(MakeLocator& make) const;

    std::size_t numElements(const DomainPart& part) const final;

    static const TypeId<EmbeddedCellComplex>& classTypeId()
    {
        return RTTI::typeId<EmbeddedCellComplex, PointSet<D>, CellComplex>(
            "EmbeddedCellComplex<" + std::to_string(D) + ">", std::to_string(D) + "-D grid");
    }

private:
    mutable std::once_flag mLocatorOnce;
    mutable std::shared_ptr<const CellLocator<D>> mLocator;
};

extern template class EmbeddedCellComplex<1>;
extern template class EmbeddedCellComplex<2>;
extern template class EmbeddedCellComplex<3>;

}
