#include <tavrin/field/SampleChunks.hpp>

#include <algorithm>
#include <cassert>
#include <numeric>

namespace tavrin
{

namespace
{

/// Adds the rows of a block; rows whose numbers follow one another count as one.
template<std::size_t D>
void addRows(const Lattice<D>& lattice, const LatticeBlock& block, SampleChunk& chunk)
{
    std::size_t begin = lattice.number({block.first[0], block.first[1], block.first[2]});
    std::size_t end = begin;
    for (std::size_t k = block.first[2]; k < block.end[2]; ++k)
        for (std::size_t j = block.first[1]; j < block.end[1]; ++j)
        {
            const std::size_t row = lattice.number({block.first[0], j, k});
            if (row != end)
            {
                chunk.add(begin, end - begin);
                begin = row;
            }
            end = row + block.length(0);
        }
    chunk.add(begin, end - begin);
}

}

void SampleChunk::add(std::size_t first, std::size_t count)
{
    for (; count > 0; first += runs.back().count, count -= runs.back().count)
        runs.push_back({first, std::min(positionsPerRun, count)});
}

std::size_t SampleChunk::count() const
{
    return std::accumulate(runs.begin(), runs.end(), std::size_t{0},
                           [](std::size_t sum, const SampleRun& run) { return sum + run.count; });
}

std::vector<SampleChunk> consecutiveChunks(std::size_t first, std::size_t last, std::size_t atMost)
{
    assert(atMost > 0 || first >= last);
    std::vector<SampleChunk> chunks;
    for (; first < last; first += chunks.back().count())
        chunks.emplace_back().add(first, std::min(atMost, last - first));
    return chunks;
}

template<std::size_t D>
std::vector<SampleChunk> latticeChunks(const Lattice<D>& lattice, std::size_t first,
                                       std::size_t last, std::size_t atMost)
{
    std::vector<SampleChunk> chunks;
    for (const LatticeBlock& block : lattice.blocksOf(first, last, atMost))
    {
        SampleChunk& chunk = chunks.emplace_back();
        chunk.block = block;
        addRows(lattice, block, chunk);
    }
    return chunks;
}

template std::vector<SampleChunk> latticeChunks(const Lattice<1>&, std::size_t, std::size_t,
                                                std::size_t);
template std::vector<SampleChunk> latticeChunks(const Lattice<2>&, std::size_t, std::size_t,
                                                std::size_t);
template std::vector<SampleChunk> latticeChunks(const Lattice<3>&, std::size_t, std::size_t,
                                                std::size_t);

}
