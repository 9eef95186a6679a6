#pragma once

#include <tavrin/base/Export.hpp>

#include <cstddef>
#include <memory>
#include <span>

namespace tavrin::graphics
{

/// The values of one attribute of all vertices.
class TAVRIN_API VertexBuffer
{
public:
    /// `values` holds `numComponents` values for each vertex in turn; `owner` keeps them alive.
    VertexBuffer(std::shared_ptr<const void> owner, std::span<const float> values,
                 std::size_t numComponents)
        : mOwner(std::move(owner)), mValues(values), mNumComponents(numComponents)
    {
    }

    std::span<const float> values() const { return mValues; }
    std::size_t numComponents() const { return mNumComponents; }
    std::size_t numVertices() const { return mValues.size() / mNumComponents; }

private:
    std::shared_ptr<const void> mOwner;
    std::span<const float> mValues;
    std::size_t mNumComponents;
};

}
