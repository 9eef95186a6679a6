#pragma once

#include <tavrin/io/Blocks.hpp>
#include <tavrin/io/FileAccess.hpp>
#include <tavrin/io/Shape.hpp>

namespace tavrin::io
{

/// One array of all steps of a block in a series, whose steps have one grid.
class SeriesReader
{
public:
    /// Opens all steps and compares what they say about themselves with the first, whose opened file
    /// is given; their points and cells are compared when a step is loaded. Throws `FileError`
    /// naming the first step that does not fit, and `usage_error` for a reference that does not fit
    /// the first step.
    SeriesReader(std::shared_ptr<FileAccess> access, std::vector<Block::Step> steps,
                 DataFile& first, const DataReference& reference);

    /// The grid of the first step, to be replaced by an equal one that is already there.
    const std::shared_ptr<const Domain>& domain() const { return mGrid.domain; }
    void setDomain(std::shared_ptr<const Domain> domain) { mGrid.domain = std::move(domain); }

    /// As it is in the first step.
    const DataFile::Array& array() const { return mArray; }
    const Shape& shape() const { return mShape; }
    std::vector<double> times() const;

    /// The values of a step. Throws `FileError` and `Aborted`.
    StoredArray load(std::size_t step) const;

private:
    void requireAlike(const DataFile& first, std::size_t step) const;
    const DataFile::Array& findArray(const DataFile& file) const;

    std::shared_ptr<FileAccess> mAccess;
    std::vector<Block::Step> mSteps;
    DataReference mReference;
    DataFile::Array mArray;
    Shape mShape;
    BuiltGrid mGrid;
};

}
