#pragma once

#include <tavrin/location/CellTreeNode.hpp>
#include <tavrin/location/FourFloats.hpp>
#include <tavrin/location/TreeSpace.hpp>

#include <bit>
#include <cassert>
#include <span>

namespace tavrin
{

/// Positions that descend the tree together, in mapped coordinates.
template<std::size_t D>
class PositionPacket
{
public:
    using Position = Tensor<double, D>;

    /// One bit for each position in a word.
    static constexpr std::size_t capacity = 32;

    /// Takes 1 ... `capacity` positions.
    PositionPacket(const TreeSpace<D>& space, std::span<const Position> positions)
    {
        assert(!positions.empty() && positions.size() <= capacity);
        mLower.fill(std::numeric_limits<float>::infinity());
        mUpper.fill(-std::numeric_limits<float>::infinity());
        for (std::size_t k = 0; k < positions.size(); ++k)
        {
            mMapped[k] = space.map(positions[k]);
            for (std::size_t i = 0; i < D; ++i)
            {
                const float x = mMapped[k].rounded[i];
                mCoordinates[i][k] = x;
                mLower[i] = std::min(mLower[i], x);
                mUpper[i] = std::max(mUpper[i], x);
            }
        }
        // Positions are compared four at a time.
        for (std::size_t k = positions.size(); k % 4 != 0; ++k)
            for (std::size_t i = 0; i < D; ++i)
                mCoordinates[i][k] = 0.0F;
        mAll = ~0U >> (capacity - positions.size());
    }

    /// One bit for each position.
    std::uint32_t all() const { return mAll; }

    const typename TreeSpace<D>::Mapped& operator[](std::size_t k) const { return mMapped[k]; }

    /// One bit for each child of a node whose box intersects the box of the positions.
    std::uint32_t childrenAt(const CellTreeNode<D>& node) const
    {
        detail::FourIntegers mask{-1, -1, -1, -1};
        for (std::size_t i = 0; i < D; ++i)
            mask &= (detail::loadFour(node.lower[i].data()) <= mUpper[i]) &
                    (detail::loadFour(node.upper[i].data()) >= mLower[i]);
        return detail::bitsOf(mask);
    }

    /// One bit for each of the positions `some` that is in the box of a child.
    std::uint32_t positionsIn(const CellTreeNode<D>& node, std::size_t child,
                              std::uint32_t some) const
    {
        std::uint32_t bits = 0;
        for (std::uint32_t rest = some; rest != 0;)
        {
            // Four at a time.
            const auto k = static_cast<std::uint32_t>(std::countr_zero(rest)) & ~3U;
            rest &= ~(15U << k);
            detail::FourIntegers mask{-1, -1, -1, -1};
            for (std::size_t i = 0; i < D; ++i)
            {
                const detail::FourFloats x = detail::loadFour(mCoordinates[i].data() + k);
                mask &= (x >= node.lower[i][child]) & (x <= node.upper[i][child]);
            }
            bits |= detail::bitsOf(mask) << k;
        }
        return bits & some;
    }

private:
    std::array<typename TreeSpace<D>::Mapped, capacity> mMapped;
    std::array<std::array<float, capacity>, D> mCoordinates;
    std::array<float, D> mLower;
    std::array<float, D> mUpper;
    std::uint32_t mAll;
};

}
