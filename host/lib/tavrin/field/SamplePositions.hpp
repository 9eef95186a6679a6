#pragma once

#include <tavrin/domain/PointSet.hpp>

#include <array>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace tavrin
{

/// The positions at which a field is sampled.
template<std::size_t D>
struct SamplePositions
{
    using Position = Tensor<double, D>;
    using Planes = std::array<std::vector<double>, D>;

    std::size_t count;
    /// Whether consecutive positions may lie far apart.
    bool mayBeScattered;
    /// The positions from number `first` on, as `ValueArray::read` delivers values. Called from several
    /// threads at once.
    std::function<std::span<const Position>(std::size_t first, std::span<Position> scratch)> read;
    /// The planes of the lattice that the positions form, if they form one.
    std::optional<Planes> planes;
};

/// The points of a point set or grid of any dimension G, as positions in D dimensions. Surplus
/// coordinates are dropped, missing ones are 0. The point set must outlive the positions.
template<std::size_t D, std::size_t G>
TAVRIN_API SamplePositions<D> positionsOf(const PointSet<G>& points);

/// Positions in memory, in any order. The memory must outlive them.
template<std::size_t D>
TAVRIN_API SamplePositions<D> positionsOf(std::span<const Tensor<double, D>> positions);

}
