#include <tavrin/location/CellCandidates.hpp>

#include <tavrin/location/CellGeometry.hpp>

#include <bit>
#include <cassert>

namespace tavrin
{

namespace
{

/// Calls `visit(k, position)` for each position of a block, until `abortFlag` reads true.
template<std::size_t D, typename Visit>
void forEachIn(const LatticeBlock& block, const PaddedLattice<D>& lattice,
               const volatile bool& abortFlag, const Visit& visit)
{
    // The end of one long loop is predicted better than the ends of three short nested ones.
    auto [i, j, k] = block.first;
    for (std::size_t rest = block.size(); rest > 0 && !abortFlag; --rest)
    {
        const std::array<std::size_t, 3> indices{i, j, k};
        visit(lattice.number(indices), lattice.position(indices));
        const bool isEndOfRow = ++i == block.end[0];
        i = isEndOfRow ? block.first[0] : i;
        j += isEndOfRow ? 1 : 0;
        const bool isEndOfLayer = j == block.end[1];
        j = isEndOfLayer ? block.first[1] : j;
        k += isEndOfLayer ? 1 : 0;
    }
}

}

template<std::size_t D>
void CellCandidates<D>::test(std::size_t k, const Position& position, std::uint32_t cell)
{
    typename GridCells<D>::Vertices vertices;
    mCells.gather(cell, vertices);
    const CellGeometry<D> geometry(vertices.type, vertices.positions.data(), mCells.rounding());
    Reference at;
    if (geometry.contains(position, at))
        mMatches.keep(k, cell, at);
}

/// Puts the cell into the next lane and the position into the queue.
template<std::size_t D>
void CellCandidates<D>::enqueue(std::size_t k, const Position& position, std::uint32_t cell)
{
    if (mQueue.size() > 0 && mCells.type(cell) != mCells.type(mCellOfLane[0]))
        testQueue();
    const std::size_t lane = mQueue.size();
    mCellOfLane[lane] = cell;
    fetchVertices(cell, mPointsOfLane[lane]);
    mQueue.add(k, position, lane);
    if (mQueue.size() == Lanes::size)
        testQueue();
}

template<std::size_t D>
void CellCandidates<D>::testQueue()
{
    keepAnswers(gatherCells(mCells.type(mCellOfLane[0]), mQueue.size()));
}

/// The cells of the first `count` lanes. The other lanes repeat the first cell.
template<std::size_t D>
auto CellCandidates<D>::gatherCells(CellType type, std::size_t count) -> Multilinear
{
    std::fill(mPointsOfLane.begin() + count, mPointsOfLane.end(), mPointsOfLane[0]);
    typename Multilinear::Vertices vertices;
    for (std::size_t n = 0; n < numVerticesOf(type); ++n)
    {
        std::array<std::array<double, Lanes::size>, D> numbers;
        for (std::size_t lane = 0; lane < Lanes::size; ++lane)
        {
            const Position& point = mCells.point(mPointsOfLane[lane][n]);
            for (std::size_t axis = 0; axis < D; ++axis)
                numbers[axis][lane] = mCells.scale() * point[axis];
        }
        for (std::size_t axis = 0; axis < D; ++axis)
            vertices[n][axis] = Lanes::at(numbers[axis].data());
    }
    return Multilinear(type, vertices);
}

/// Tests the queue in these cells, and keeps what it finds.
template<std::size_t D>
void CellCandidates<D>::keepAnswers(const Multilinear& cells)
{
    if constexpr (D >= 2)
    {
        std::array<CandidateAnswers<D>, CandidateQueue<D>::numBatches> answers;
        cells.find(mQueue, mQueue.completeBatches(), answers.data());
        const Reference center = centerReference(cells.type());
        for (std::size_t trial = 0; trial < mQueue.size(); ++trial)
        {
            const CandidateAnswers<D>& answer = answers[trial / Lanes::size];
            const std::size_t place = trial % Lanes::size;
            const std::size_t k = mQueue.number(trial);
            const std::uint32_t cell = mCellOfLane[mQueue.lane(trial)];
            if (hasBit(answer.isInside, place))
            {
                Reference at = center;
                for (std::size_t i = 0; i < D; ++i)
                    at[i] += answer.solution[i][place];
                mMatches.keep(k, cell, at);
            }
            else if (hasBit(answer.isUndecided, place))
                test(k, mQueue.position(trial), cell);
        }
        mQueue.clear();
    }
}

template<std::size_t D>
void CellCandidates<D>::add(std::span<const std::uint32_t> cells,
                            std::span<const LatticeBlock> blocks, const PaddedLattice<D>& lattice,
                            const volatile bool& abortFlag)
{
    assert(cells.size() == blocks.size() && cells.size() <= Lanes::size);
    if (cells.empty())
        return;
    // Gathering cells pays off where each serves at least one position on average.
    std::size_t numPairs = 0;
    for (const LatticeBlock& block : blocks)
        numPairs += block.size();
    if (numPairs >= cells.size() && isMultilinear(mCells.commonType(), D))
        return addTogether(cells, blocks, lattice, abortFlag);
    for (std::size_t n = 0; n < cells.size(); ++n)
        forEachIn(blocks[n], lattice, abortFlag,
                  [&](std::size_t k, const Position& position) { add(k, position, cells[n]); });
}

template<std::size_t D>
void CellCandidates<D>::addTogether(std::span<const std::uint32_t> cells,
                                    std::span<const LatticeBlock> blocks,
                                    const PaddedLattice<D>& lattice, const volatile bool& abortFlag)
{
    finish();
    for (std::size_t lane = 0; lane < cells.size(); ++lane)
    {
        mCellOfLane[lane] = cells[lane];
        mCells.gather(cells[lane], mPointsOfLane[lane]);
    }
    const Multilinear multilinear = gatherCells(mCells.commonType(), cells.size());
    for (std::size_t lane = 0; lane < cells.size() && !abortFlag; ++lane)
        enqueueBlock(multilinear, lane, blocks[lane], lattice);
    if (mQueue.size() > 0)
        keepAnswers(multilinear);
}

/// Queues the positions of a block that the cell of a lane may contain. The last few may stay in the
/// queue.
template<std::size_t D>
void CellCandidates<D>::enqueueBlock(const Multilinear& cells, std::size_t lane,
                                     const LatticeBlock& block, const PaddedLattice<D>& lattice)
{
    if constexpr (D >= 2)
        block.forEachPart(Multilinear::planesAtOnce,
                          [&](const LatticeBlock& part)
                          {
                              for (std::uint64_t bits = cells.sift(lane, part, lattice); bits != 0;
                                   bits &= bits - 1)
                              {
                                  const auto offset = Multilinear::offsetOf(std::countr_zero(bits));
                                  const std::array<std::size_t, 3> indices{
                                      part.first[0] + offset[0], part.first[1] + offset[1],
                                      part.first[2] + offset[2]};
                                  const std::size_t k = lattice.number(indices);
                                  mQueue.addIf(mMatches.accepts(k, mCellOfLane[lane]), k,
                                               lattice.position(indices), lane);
                                  if (mQueue.isFull())
                                      keepAnswers(cells);
                              }
                          });
}

template<std::size_t D>
void CellCandidates<D>::fetch(std::span<const std::uint32_t> cells) const
{
    std::array<std::size_t, maximumVertices> points;
    for (const std::uint32_t cell : cells)
        fetchVertices(cell, points);
}

/// Gathers the point numbers of a cell and prefetches the points.
template<std::size_t D>
void CellCandidates<D>::fetchVertices(std::uint32_t cell,
                                      std::span<std::size_t, maximumVertices> points) const
{
    const std::size_t count = mCells.gather(cell, points);
    for (const std::size_t point : points.first(count))
        __builtin_prefetch(&mCells.point(point));
}

template class CellCandidates<1>;
template class CellCandidates<2>;
template class CellCandidates<3>;

}
