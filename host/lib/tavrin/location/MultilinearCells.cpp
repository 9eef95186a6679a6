#include <tavrin/location/MultilinearCells.hpp>

#include <tavrin/base/Processors.hpp>

#include <cassert>
#include <memory>

namespace tavrin
{

namespace
{

/// How far a reference point, given relative to the center, lies outside the cell.
template<std::size_t D>
Lanes distanceOutside(CellType type, const Tensor<Lanes, D>& u)
{
    if (type != CellType::Prisms)
        return maximumNorm(u) - 0.5;
    return max(max(0.0 - min(u[0], u[1]), u[0] + u[1]) - 1.0 / 3.0, abs(u[D - 1]) - 0.5);
}

template<std::size_t D>
CandidateAnswers<D> answersOf(CellType type, const MultilinearInversion<D, Lanes>& inversion,
                              const Tensor<Lanes, D>& positions)
{
    const auto found = inversion.find(positions);
    const Lanes distance = distanceOutside(type, found.solution);
    const Lanes range = max(Lanes(reachOf(type)), maximumNorm(found.solution));
    const auto isInside = found.isFound & (distance <= locationTolerance);
    const auto isOutside = found.isRuledOut | (found.isFound & (distance > largestTolerance) &
                                               (inversion.distortion(range) < 1.0));
    return {bitsOf(isInside), ~bitsOf(isInside | isOutside), found.solution};
}

// What these functions call is inlined, so that all of it is compiled for each processor.

template<std::size_t D>
TAVRIN_FOR_SEVERAL_PROCESSORS [[gnu::flatten]] void prepare(
    CellType type, const Tensor<Lanes, D>* vertices, MultilinearInversion<D, Lanes>& inversion,
    typename MultilinearInversion<D, Lanes>::Affine& affine)
{
    std::construct_at(&inversion, type, vertices);
    affine = inversion.affine();
}

/// One bit for each position that the cell of a lane may contain. Bits outside of the block are arbitrary.
template<std::size_t D>
TAVRIN_FOR_SEVERAL_PROCESSORS [[gnu::flatten]] std::uint64_t siftBlock(
    const typename MultilinearInversion<D, Lanes>::Affine& affine, std::size_t lane,
    const LatticeBlock& block, const PaddedLattice<D>& lattice)
{
    const auto planesFrom = [&](std::size_t axis, std::size_t index)
    { return &lattice.planes[axis][block.first[axis]] + index; };
    // The solution is linear in the position: these are the terms of one axis, for eight planes.
    const auto termsOf = [&](std::size_t axis, const Lanes& planes)
    {
        const Lanes offset = planes - affine.origin[axis][lane] - affine.constant[axis][lane];
        Tensor<Lanes, D> terms;
        for (std::size_t i = 0; i < D; ++i)
            terms[i] = affine.inverse.row(i)[axis][lane] * offset;
        return terms;
    };
    Tensor<Lanes, D> limits;
    for (std::size_t i = 0; i < D; ++i)
        limits[i] = affine.limits[i][lane];
    // Four positions of two neighboring rows at a time.
    constexpr Lanes::Sources fours{0, 1, 2, 3, 0, 1, 2, 3};
    constexpr Lanes::Sources pair{0, 0, 0, 0, 1, 1, 1, 1};
    const auto columns = termsOf(0, rearranged(Lanes::at(planesFrom(0, 0)), fours));
    std::uint64_t bits = 0;
    for (std::size_t j = 0; j < block.length(1); j += 2)
    {
        const auto rows = columns + termsOf(1, rearranged(Lanes::at(planesFrom(1, j)), pair));
        for (std::size_t k = 0; k < block.length(2); ++k)
        {
            auto solution = rows;
            if constexpr (D == 3)
                solution += termsOf(2, *planesFrom(2, k));
            bits |= std::uint64_t{bitsOf(!isBeyond(solution, limits))} << (4 * j + 16 * k);
        }
    }
    return bits;
}

template<std::size_t D>
TAVRIN_FOR_SEVERAL_PROCESSORS [[gnu::flatten]] void findBatches(
    CellType type, const MultilinearInversion<D, Lanes>& inversion, const CandidateQueue<D>& trials,
    std::size_t numBatches, CandidateAnswers<D>* answers)
{
    for (std::size_t n = 0; n < numBatches; ++n)
        answers[n] =
            answersOf(type, rearranged(inversion, trials.lanesOf(n)), trials.positionsOf(n));
}

}

template<std::size_t D>
MultilinearCells<D>::MultilinearCells(CellType type, const Vertices& vertices) : mType(type)
{
    prepare<D>(type, vertices.data(), mInversion, mAffine);
}

template<std::size_t D>
std::uint64_t MultilinearCells<D>::sift(std::size_t lane, const LatticeBlock& block,
                                        const PaddedLattice<D>& lattice) const
{
    assert(block.length(0) <= planesAtOnce && block.length(1) <= planesAtOnce &&
           block.length(2) <= planesAtOnce && block.size() > 0);
    const auto upTo = [](std::size_t count) { return ~std::uint64_t{0} >> (64 - count); };
    std::uint64_t mask = upTo(block.length(0));
    mask *= 0x1111 & upTo(4 * block.length(1));
    mask *= 0x0001000100010001 & upTo(16 * block.length(2));
    return mask & siftBlock<D>(mAffine, lane, block, lattice);
}

template<std::size_t D>
void MultilinearCells<D>::find(const CandidateQueue<D>& trials, std::size_t numBatches,
                               CandidateAnswers<D>* answers) const
{
    findBatches<D>(mType, mInversion, trials, numBatches, answers);
}

template class MultilinearCells<2>;
template class MultilinearCells<3>;

}
