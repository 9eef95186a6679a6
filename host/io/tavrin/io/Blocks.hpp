#pragma once

#include <tavrin/io/FileAccess.hpp>

namespace tavrin::io
{

/// A part of a data set, with one file for each step.
struct Block
{
    struct Step
    {
        /// None outside of time series.
        std::optional<double> time;
        FilePlace place;
    };

    std::string name;
    /// At least one; the times ascend.
    std::vector<Step> steps;
};

/// The blocks that a reference means, in the order of their list: of all steps of a series, or of
/// the one meant. A file that is no list is the only block of itself. Throws `FileError` for a file
/// or list that cannot be read and for steps whose blocks are not those of the first, and
/// `usage_error` for a time that the series does not have.
std::vector<Block> findBlocks(const DataReference& reference);

/// Throws `FileError` for the first file that is missing.
void requireFiles(const std::vector<Block>& blocks);

/// Opens the file of the first step. Throws `FileError`, and `usage_error` for a time that the file
/// of no series does not have.
std::unique_ptr<DataFile> openFirst(const FileAccess& access, const Block& block,
                                    const DataReference& reference);

/// Whether two times are equal but for rounding.
bool isSameTime(double a, double b);

/// "0, 0.5, 1", the middle of a long list left out.
std::string enumerate(const std::vector<std::string>& texts);

}
