#pragma once

#include <tavrin/domain/CellType.hpp>

#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <variant>
#include <vector>

namespace tavrin
{

/// Indices of 32 or 64 bits, in memory of its own or of someone else.
class TAVRIN_API IndexArray
{
public:
    using Storage = std::variant<std::span<const std::int32_t>, std::span<const std::int64_t>>;

    IndexArray(Storage indices, std::shared_ptr<const void> owner)
        : mIndices(indices), mOwner(std::move(owner))
    {
    }

    /// Takes over the indices without copying them.
    explicit IndexArray(std::vector<std::int64_t> indices)
    {
        auto owned = std::make_shared<const std::vector<std::int64_t>>(std::move(indices));
        mIndices = std::span<const std::int64_t>(*owned);
        mOwner = std::move(owned);
    }

    std::size_t size() const
    {
        return std::visit([](const auto& indices) { return indices.size(); }, mIndices);
    }

    std::int64_t operator[](std::size_t i) const
    {
        return std::visit([i](const auto& indices) -> std::int64_t { return indices[i]; },
                          mIndices);
    }

    /// The indices as they are stored, for loops over many of them.
    const Storage& storage() const { return mIndices; }

    bool operator==(const IndexArray& other) const;

private:
    Storage mIndices;
    std::shared_ptr<const void> mOwner;
};

/// The cells of an unstructured grid: cell i has type i and the vertices
/// connectivity[offsets[i]] ... connectivity[offsets[i + 1] - 1].
struct TAVRIN_API CellTable
{
    std::vector<CellType> types;
    /// One more than there are cells; not descending.
    IndexArray offsets;
    IndexArray connectivity;

    /// Throws `runtime_error` with the number of faulty cells and the first of them where the arrays do
    /// not fit together, a type does not exist, a cell has a wrong number of vertices for its type, or
    /// a vertex is not one of `numPoints` points.
    void check(std::size_t numPoints) const;

    bool operator==(const CellTable& other) const = default;
};

}
