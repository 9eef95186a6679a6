#include <tavrin/field/MultilinearCells.hpp>

#include <tavrin/base/Processors.hpp>

#include <memory>

namespace tavrin
{

namespace
{

/// How far a reference point, as seen from the centre, lies outside the cell.
template<std::size_t D>
Lanes distanceOutside(CellType type, const Tensor<Lanes, D>& u)
{
    if (type != CellType::Prisms)
        return maximumNorm(u) - 0.5;
    return max(max(0.0 - min(u[0], u[1]), u[0] + u[1]) - 1.0 / 3.0, abs(u[D - 1]) - 0.5);
}

template<std::size_t D>
TrialAnswers<D> answersOf(CellType type, const MultilinearInversion<D, Lanes>& inversion,
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

// These are inlined as a whole, so that all of it is compiled for each processor.

template<std::size_t D>
TAVRIN_FOR_SEVERAL_PROCESSORS [[gnu::flatten]] void prepare(
    CellType type, const Tensor<Lanes, D>* vertices, MultilinearInversion<D, Lanes>& inversion,
    typename MultilinearInversion<D, Lanes>::Affine& affine)
{
    std::construct_at(&inversion, type, vertices);
    affine = inversion.affine();
}

template<std::size_t D>
TAVRIN_FOR_SEVERAL_PROCESSORS [[gnu::flatten]] void ruleOutBatches(
    const typename MultilinearInversion<D, Lanes>::Affine& affine, const Trials<D>& trials,
    std::size_t numBatches, std::uint32_t* areRuledOut)
{
    for (std::size_t n = 0; n < numBatches; ++n)
        areRuledOut[n] =
            bitsOf(rearranged(affine, trials.lanesOf(n)).rulesOut(trials.positionsOf(n)));
}

template<std::size_t D>
TAVRIN_FOR_SEVERAL_PROCESSORS [[gnu::flatten]] void findBatches(
    CellType type, const MultilinearInversion<D, Lanes>& inversion, const Trials<D>& trials,
    std::size_t numBatches, TrialAnswers<D>* answers)
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
void MultilinearCells<D>::ruleOut(const Trials<D>& trials, std::size_t numBatches,
                                  std::uint32_t* areRuledOut) const
{
    ruleOutBatches<D>(mAffine, trials, numBatches, areRuledOut);
}

template<std::size_t D>
void MultilinearCells<D>::find(const Trials<D>& trials, std::size_t numBatches,
                               TrialAnswers<D>* answers) const
{
    findBatches<D>(mType, mInversion, trials, numBatches, answers);
}

template class MultilinearCells<2>;
template class MultilinearCells<3>;

}
