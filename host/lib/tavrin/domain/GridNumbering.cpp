#include <tavrin/domain/GridNumbering.hpp>

namespace tavrin
{

GridNumbering::GridNumbering(const GridSize& size) : mSize(size)
{
    std::size_t stride = 1;
    for (std::size_t index = 0; index < size.size(); ++index)
    {
        if (size[index] > 1)
        {
            mAxes[mNumAxes++] = {index, size[index] - 1, stride, mNumCells};
            mNumCells *= size[index] - 1;
        }
        stride *= size[index];
    }
    if (stride == 0)
        mNumCells = 0;
    const std::size_t i = mAxes[0].pointStride;
    const std::size_t j = mAxes[1].pointStride;
    const std::size_t k = mAxes[2].pointStride;
    mCornerOffsets = {0, i, i + j, j, k, i + k, i + j + k, j + k};
}

CellType GridNumbering::cellType() const
{
    constexpr std::array typesByDimension{CellType::Points, CellType::Lines, CellType::Quads,
                                          CellType::Hexahedra};
    return typesByDimension[mNumAxes];
}

}
