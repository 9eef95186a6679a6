#pragma once

#include <tavrin/io/FileAccess.hpp>

namespace tavrin::io
{

/// A part of a data set. It has one file for each time step.
struct Block
{
    struct Step
    {
        /// None where the file is not part of a time series.
        std::optional<double> time;
        FilePlace place;
    };

    std::string name;
    /// At least one; the times ascend.
    std::vector<Step> steps;
};

/// The blocks that a reference names, in the order of their list: for all steps of a series, or for
/// the step of the reference. A file that is not a list is its own only block. Throws `FileError`
/// for a file or list that cannot be read and for steps whose blocks differ from those of the
/// first, and `usage_error` for a time that the series does not have.
std::vector<Block> findBlocks(FileAccess& access, const DataReference& reference);

/// The times of the steps that a reference names, ascending: those of a series, or of the files that
/// are not part of one, as far as they have a time. Reads no values. Throws as `findBlocks` and
/// `openFirst`.
std::vector<double> findTimes(FileAccess& access, const DataReference& reference);

/// Throws `FileError` for the first file of the blocks that is missing.
void requireFiles(const std::vector<Block>& blocks);

/// Opens the file of the first step. Throws `FileError`, and `usage_error` where the file is not
/// part of a series and does not have the time of the reference.
std::shared_ptr<DataFile> openFirst(FileAccess& access, const Block& block,
                                    const DataReference& reference);

/// Whether two times are equal up to rounding.
bool isSameTime(double a, double b);

/// The texts with commas, "0, 0.5, 1"; the middle of a long list is replaced by dots.
std::string shortList(const std::vector<std::string>& texts);

}
