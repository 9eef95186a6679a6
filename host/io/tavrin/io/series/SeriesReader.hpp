#pragma once

#include <tavrin/io/ArrayReading.hpp>
#include <tavrin/io/FileAccess.hpp>
#include <tavrin/io/series/Blocks.hpp>

namespace tavrin::io
{

/// Reads an array of a block at all steps of a series, which must have the same grid.
class SeriesReader
{
public:
    /// Opens all steps and compares their structure with that of the first step, whose open file is
    /// given. Points and cells are compared when a step is loaded. Throws `FileError` for the first
    /// step that differs, and `usage_error` for a reference that does not fit the first step.
    SeriesReader(std::shared_ptr<FileAccess> access, std::vector<Block::Step> steps,
                 DataFile& first, const DataReference& reference);

    /// The grid of the first step. It may be replaced by an equal one.
    const std::shared_ptr<const Domain>& domain() const { return mGrid.domain; }
    void setDomain(std::shared_ptr<const Domain> domain) { mGrid.domain = std::move(domain); }

    /// The index of each value in the file; null where the indices are the same.
    const std::shared_ptr<const std::vector<std::size_t>>& origin() const
    {
        return originOf(mGrid, mArray.association);
    }

    /// The array in the file of the first step.
    const DataFile::Array& array() const { return mArray; }
    const ArrayReading& reading() const { return mReading; }
    std::vector<double> times() const;

    /// Which values of all steps are valid; empty where no step has a mask. The masks are kept in
    /// memory: a byte per value.
    ValidityMask takeValidity() { return std::move(mValidity); }

    /// The values of a step. Throws `FileError` and `Aborted`.
    StoredArray load(std::size_t step) const;

private:
    void requireAlike(const DataFile& first, DataFile& file, std::size_t step) const;
    void addValidity(DataFile& file, std::size_t step);
    const DataFile::Array& findArray(const DataFile& file) const;

    std::shared_ptr<FileAccess> mAccess;
    std::vector<Block::Step> mSteps;
    DataReference mReference;
    DataFile::Array mArray;
    ArrayReading mReading;
    BuiltGrid mGrid;
    ValidityMask mValidity;
};

}
