#pragma once

#include <tavrin/pipeline/OptionAssignment.hpp>

#include <tavrin/io/Loader.hpp>

#include <map>

namespace tavrin::pipeline
{

/// The files of data and color maps that assignments name, and those that the former list. Throws
/// `usage_error` for a malformed reference.
TAVRIN_API std::vector<std::filesystem::path> inputFiles(
    const std::vector<OptionAssignment>& assignments, const AlgorithmRun& run);

/// Sets the options of a run from the command line, with data from files.
class TAVRIN_API RunInputs
{
public:
    RunInputs(AlgorithmRun& run, io::Loader& loader) : mRun(run), mLoader(loader) {}

    /// Sets the options in the order given, so that each one finds those before it in place. All
    /// data is loaded before: a color map without a range spans the norms of the first field,
    /// wherever it is named. Throws what `AlgorithmRun`, `Loader` and `loadColorMap` throw.
    void apply(const std::vector<OptionAssignment>& assignments);

    /// What was loaded: functions and grids in the order given, then the rest.
    const DataObjectBundle::Members& objects() const { return mObjects; }

private:
    using Object = std::shared_ptr<const DataObject>;
    using Objects = DataObjectBundle::Members;

    void apply(const OptionAssignment& assignment, const Objects& objects);
    Objects load(const OptionAssignment& assignment);
    Object loadGrid(io::DataReference reference, const InputBase& input);
    Object loadOther(const OptionAssignment& assignment);

    AlgorithmRun& mRun;
    io::Loader& mLoader;
    DataObjectBundle::Members mObjects;
    std::map<std::string, DataObjectBundle::Members> mBundles;
};

}
