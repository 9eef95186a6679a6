#pragma once

#include "OutputRequest.hpp"
#include "RunReport.hpp"

#include <tavrin/graphics/Picture.hpp>
#include <tavrin/io/PendingFile.hpp>

namespace tavrin::app
{

/// Whether the run published a result on the requested output.
bool isPublished(const OutputRequest& request, const AlgorithmRun& run);

/// Writes the results of a run: data as data files, graphics as pictures or as line segments.
class OutputWriter
{
public:
    /// Pictures show the domain and the colors of the inputs. `observer` hears of the painting. All
    /// arguments must outlive the writer.
    OutputWriter(const AlgorithmRun& run, const DataObjectBundle::Members& inputs,
                 const graphics::PictureOptions& pictureOptions, ProgressObserver& observer,
                 const volatile bool& abortFlag)
        : mRun(run), mInputs(inputs), mPictureOptions(pictureOptions), mObserver(observer),
          mAbortFlag(abortFlag)
    {
    }

    /// Adds the file, complete but for its name, to `files`. Throws `FileError`, `Aborted`,
    /// `usage_error` for what the file's format does not take, and
    /// `runtime_error` where no picture can be painted.
    RunReport::Output write(const OutputRequest& request, io::PendingFiles& files) const;

private:
    RunReport::Output writeData(const OutputRequest& request, io::PendingFiles& files) const;
    RunReport::Output writePicture(const OutputRequest& request, io::PendingFiles& files) const;
    RunReport::Output writeSegments(const OutputRequest& request, io::PendingFiles& files) const;

    const AlgorithmRun& mRun;
    const DataObjectBundle::Members& mInputs;
    const graphics::PictureOptions& mPictureOptions;
    ProgressObserver& mObserver;
    const volatile bool& mAbortFlag;
};

}
