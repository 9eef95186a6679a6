#pragma once

#include <tavrin/pipeline/OptionAssignment.hpp>

#include <span>

namespace tavrin::pipeline
{

/// The files that are read for the assignments, including those that time series and multi-block
/// files list.
TAVRIN_API std::vector<std::filesystem::path> inputFiles(
    std::span<const OptionAssignment> assignments, io::Loader& loader);

/// Sets the options of a run from text, with data from files.
class TAVRIN_API RunInputs
{
public:
    RunInputs(AlgorithmRun& run, io::Loader& loader) : mRun(run), mLoader(loader) {}

    /// Loads and connects all data, a bundle as a whole, and then sets the values in the order given.
    /// An empty reference to a bundle drops the members given before it. A color map without a range
    /// spans the norms of the first function, wherever that is given. Throws what `AlgorithmRun` and
    /// `DataKind::make` throw.
    void apply(std::span<const OptionAssignment> assignments);

    /// The objects that were loaded, in the order in which they were made: color maps come last.
    const DataObjectBundle::Members& objects() const { return mObjects; }

private:
    using Members = DataObjectBundle::Members;

    std::vector<Members> loadData(std::span<const OptionAssignment> assignments);
    void connectData(std::span<const OptionAssignment> assignments,
                     const std::vector<Members>& loaded);
    Members load(const ObjectReference& reference, const InputBase& input);
    void connect(const std::string& option, const Members& members);

    AlgorithmRun& mRun;
    io::Loader& mLoader;
    Members mObjects;
};

}
