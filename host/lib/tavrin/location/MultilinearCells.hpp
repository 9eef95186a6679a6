#pragma once

#include <tavrin/location/CandidateQueue.hpp>
#include <tavrin/location/MultilinearInversion.hpp>
#include <tavrin/location/PaddedLattice.hpp>

#include <array>
#include <cstdint>

namespace tavrin
{

/// The answers for a batch of candidates, with one bit for each.
template<std::size_t D>
struct CandidateAnswers
{
    std::uint32_t isInside = 0;
    /// The position is near the boundary of the cell, or the cell is too distorted for the quick test.
    std::uint32_t isUndecided = 0;
    /// The reference point relative to the center of the cell.
    Tensor<Lanes, D> solution;
};

/// Quads, prisms or hexahedra of one type, one in each lane. Positions are tested in several of them at a
/// time; answers do not depend on which are tested together.
template<std::size_t D>
class MultilinearCells
{
public:
    using Vertices = std::array<Tensor<Lanes, D>, 8>;

    MultilinearCells(CellType type, const Vertices& vertices);

    CellType type() const { return mType; }

    /// The maximum number of planes per axis of a block in `sift`: its positions have one bit each in a
    /// word of 64.
    static constexpr std::uint32_t planesAtOnce = 4;

    /// Rules out most positions in a block of a lattice that are not in the cell of a lane. The result
    /// has one bit for each of the others.
    std::uint64_t sift(std::size_t lane, const LatticeBlock& block,
                       const PaddedLattice<D>& lattice) const;

    /// The indices in the block of the position with a bit.
    static std::array<std::uint32_t, 3> offsetOf(int bit)
    {
        const auto number = static_cast<std::uint32_t>(bit);
        return {number % planesAtOnce, number / planesAtOnce % planesAtOnce,
                number / (planesAtOnce * planesAtOnce)};
    }

    /// Tests the candidates of a queue: writes one answer for each batch.
    void find(const CandidateQueue<D>& trials, std::size_t numBatches,
              CandidateAnswers<D>* answers) const;

private:
    CellType mType;
    MultilinearInversion<D, Lanes> mInversion;
    typename MultilinearInversion<D, Lanes>::Affine mAffine;
};

extern template class MultilinearCells<2>;
extern template class MultilinearCells<3>;

}
