#pragma once

#include <tavrin/domain/Lattice.hpp>
#include <tavrin/location/CandidateQueue.hpp>
#include <tavrin/location/MultilinearInversion.hpp>

#include <array>
#include <cstdint>

namespace tavrin
{

/// What a batch of trials says: one bit for each.
template<std::size_t D>
struct CandidateAnswers
{
    std::uint32_t isInside = 0;
    /// The position is near the boundary of the cell, or the cell is too distorted for a quick word.
    std::uint32_t isUndecided = 0;
    /// As seen from the center of the cell.
    Tensor<Lanes, D> solution;
};

/// Quads, prisms or hexahedra of one type, one in each lane. Positions are tried in several of them
/// at a time; no answer depends on which come together.
template<std::size_t D>
class MultilinearCells
{
public:
    using Vertices = std::array<Tensor<Lanes, D>, 8>;

    MultilinearCells(CellType type, const Vertices& vertices);

    CellType type() const { return mType; }

    /// So many planes of each axis may a block have to be sifted.
    static constexpr std::uint32_t planesAtOnce = 4;

    /// Says quickly of most positions in a block of a lattice that the cell in a lane does not have
    /// them: the others have one bit each. Seven numbers behind the planes of the lattice are read,
    /// too.
    std::uint64_t sift(std::size_t lane, const LatticeBlock& block,
                       const Lattice<D>& lattice) const;

    /// Where in the block the position of a bit is.
    static std::array<std::uint32_t, 3> offsetOf(int bit)
    {
        const auto number = static_cast<std::uint32_t>(bit);
        return {number % planesAtOnce, number / planesAtOnce % planesAtOnce,
                number / (planesAtOnce * planesAtOnce)};
    }

    /// Finds out of each trial whether the cell contains the position, and where: one answer for each
    /// batch.
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
