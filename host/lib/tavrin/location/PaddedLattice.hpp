#pragma once

#include <tavrin/domain/Lattice.hpp>
#include <tavrin/location/Lanes.hpp>

#include <array>
#include <vector>

namespace tavrin
{

/// A lattice with planes of its own, which are scaled copies of another one's. `Lanes::at` may read from
/// any of them on, beyond the last one, too.
template<std::size_t D>
class PaddedLattice : public Lattice<D>
{
public:
    PaddedLattice(const Lattice<D>& lattice, double scale)
    {
        for (std::size_t axis = 0; axis < D; ++axis)
        {
            const auto original = lattice.planes[axis];
            mPlanes[axis].resize(original.size() + Lanes::size - 1);
            for (std::size_t i = 0; i < original.size(); ++i)
                mPlanes[axis][i] = scale * original[i];
            this->planes[axis] = std::span(mPlanes[axis]).first(original.size());
        }
    }
    PaddedLattice(const PaddedLattice&) = delete;
    PaddedLattice& operator=(const PaddedLattice&) = delete;

private:
    std::array<std::vector<double>, D> mPlanes;
};

}
