#pragma once

#include <tavrin/pipeline/Plan.hpp>
#include <tavrin/pipeline/RunReport.hpp>

#include <tavrin/io/FunctionOutput.hpp>

#include <map>

namespace tavrin::pipeline
{

/// Whether the run published a result on the requested output.
TAVRIN_API bool isPublished(const OutputRequest& request, const AlgorithmRun& run);

/// Writes the results of runs: data as data files, graphics as pictures or as line segments. Nothing
/// appears under its name before it is published.
class TAVRIN_API OutputFiles
{
public:
    /// `observer` follows the painting. The arguments must outlive the object.
    OutputFiles(ProgressObserver& observer, const volatile bool& abortFlag)
        : mObserver(observer), mAbortFlag(abortFlag)
    {
    }

    /// What a picture shows besides the graphics of a run.
    struct Context
    {
        /// The bounding box and the color bar are those of the inputs.
        const DataObjectBundle::Members& inputs;
        /// The time for a label, if any.
        std::optional<double> time;
    };

    /// Writes what a run published. In a
    /// loop, data without a file for each iteration is appended to its file. Throws `FileError`,
    /// `Aborted`, `usage_error` for a result that the format of the file cannot hold, and
    /// `runtime_error` if no picture can be painted.
    OutputReport write(const OutputRequest& request, const AlgorithmRun& run,
                       const Context& context, const Iteration& iteration);

    /// Gives those files their names that no later iteration adds to.
    void publishFinished();

    /// Completes the files to which iterations added. All files are published together by the
    /// caller.
    io::PendingFiles finish();

private:
    OutputReport writeData(const OutputRequest& request, const FunctionBase& function,
                           const Iteration& iteration);
    OutputReport writePicture(const OutputRequest& request, const AlgorithmRun& run,
                              const Context& context, const Iteration& iteration);
    OutputReport writeSegments(const OutputRequest& request, const AlgorithmRun& run,
                               const Iteration& iteration);

    ProgressObserver& mObserver;
    const volatile bool& mAbortFlag;
    io::PendingFiles mFinished;
    /// By file: those that grow with every iteration.
    std::map<std::filesystem::path, std::unique_ptr<io::FunctionOutput>> mGrowing;
};

}
