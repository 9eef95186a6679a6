#include <tavrin/field/CellCandidates.hpp>

#include <tavrin/base/Processors.hpp>
#include <tavrin/field/CellGeometry.hpp>
#include <tavrin/field/MultilinearInversion.hpp>

namespace tavrin
{

namespace
{

/// What a batch of inversions says: one bit for each lane.
template<std::size_t D>
struct BatchAnswer
{
    std::uint32_t isInside = 0;
    /// The position is near the boundary of the cell, or the cell is too distorted for a quick word.
    std::uint32_t isUndecided = 0;
    /// As seen from the centre of the cell.
    Tensor<Lanes, D> solution;
};

/// How far a reference point, as seen from the centre, lies outside the cell.
template<std::size_t D>
Lanes distanceOutside(CellType type, const Tensor<Lanes, D>& u)
{
    if (type != CellType::Prisms)
        return maximumNorm(u) - 0.5;
    return max(max(0.0 - min(u[0], u[1]), u[0] + u[1]) - 1.0 / 3.0, abs(u[D - 1]) - 0.5);
}

/// Inlined as a whole, so that all of it is compiled for each processor.
template<std::size_t D>
TAVRIN_FOR_SEVERAL_PROCESSORS [[gnu::flatten]] void invert(CellType type,
                                                           const Tensor<Lanes, D>* vertices,
                                                           const Tensor<Lanes, D>& position,
                                                           BatchAnswer<D>& answer)
{
    const double reach = reachOf(type);
    const MultilinearInversion<D, Lanes> inversion(mapOf(type, vertices, position), reach);
    answer.solution = inversion.solution();
    const Lanes distance = distanceOutside(type, answer.solution);
    const Lanes range = max(Lanes(reach), maximumNorm(answer.solution));
    const auto isInside = inversion.isFound() & (distance <= locationTolerance);
    const auto isOutside =
        inversion.isRuledOut() |
        (inversion.isFound() & (distance > largestTolerance) & (inversion.distortion(range) < 1.0));
    answer.isInside = bitsOf(isInside);
    answer.isUndecided = ~bitsOf(isInside | isOutside);
}

}

template<std::size_t D>
void CellCandidates<D>::test(std::size_t k, std::uint32_t cell)
{
    typename GridCells<D>::Vertices vertices;
    mCells.gather(cell, vertices);
    const CellGeometry<D> geometry(vertices.type, vertices.positions.data());
    Reference at;
    if (geometry.contains(mPositions[k], at))
        keep(k, cell, at);
}

template<std::size_t D>
void CellCandidates<D>::addToBatch(std::size_t k, std::uint32_t cell)
{
    const CellType type = mCells.type(cell);
    if (type != mBatchType && mBatchSize > 0)
        testBatch();
    mBatchType = type;
    const std::size_t lane = mBatchSize++;
    mBatchCells[lane] = cell;
    mBatchPositions[lane] = k;
    auto& points = mBatchPoints[lane];
    const std::size_t count = mCells.gather(cell, points);
    for (std::size_t n = 0; n < count; ++n)
        __builtin_prefetch(&mCells.point(points[n]));
    if (mBatchSize == Lanes::size)
        testBatch();
}

template<std::size_t D>
void CellCandidates<D>::testBatch()
{
    if constexpr (D >= 2)
    {
        const std::size_t numVertices = numVerticesOf(mBatchType);
        // Lanes without a cell of their own repeat the first.
        const auto source = [this](std::size_t lane) { return lane < mBatchSize ? lane : 0; };
        std::array<Tensor<Lanes, D>, 8> vertices;
        for (std::size_t k = 0; k < numVertices; ++k)
            for (std::size_t i = 0; i < D; ++i)
                vertices[k][i] =
                    mCells.scale() *
                    Lanes::of([&](std::size_t lane)
                              { return mCells.point(mBatchPoints[source(lane)][k])[i]; });
        Tensor<Lanes, D> position;
        for (std::size_t i = 0; i < D; ++i)
            position[i] = Lanes::of([&](std::size_t lane)
                                    { return mPositions[mBatchPositions[source(lane)]][i]; });
        BatchAnswer<D> answer;
        invert<D>(mBatchType, vertices.data(), position, answer);
        const Reference center = centerReference(mBatchType);
        for (std::size_t lane = 0; lane < mBatchSize; ++lane)
            if ((answer.isInside >> lane & 1U) != 0)
            {
                Reference at = center;
                for (std::size_t i = 0; i < D; ++i)
                    at[i] += answer.solution[i][lane];
                keep(mBatchPositions[lane], mBatchCells[lane], at);
            }
            else if ((answer.isUndecided >> lane & 1U) != 0)
                test(mBatchPositions[lane], mBatchCells[lane]);
        mBatchSize = 0;
    }
}

template class CellCandidates<1>;
template class CellCandidates<2>;
template class CellCandidates<3>;

}
