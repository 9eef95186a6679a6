#pragma once

#include <tavrin/pipeline/OutputRequest.hpp>
#include <tavrin/pipeline/RunReport.hpp>

#include <tavrin/graphics/Picture.hpp>
#include <tavrin/io/PendingFile.hpp>

namespace tavrin::pipeline
{

/// Whether the run published a result on the requested output.
TAVRIN_API bool isPublished(const OutputRequest& request, const AlgorithmRun& run);

/// Writes the results of a run: data as data files, graphics as pictures or as line segments.
class TAVRIN_API OutputWriter
{
public:
    /// Pictures show the bounding box and the color bar of the inputs. `observer` follows the
    /// painting. All arguments must outlive the writer.
    OutputWriter(const AlgorithmRun& run, const DataObjectBundle::Members& inputs,
                 const graphics::PictureOptions& pictureOptions, ProgressObserver& observer,
                 const volatile bool& abortFlag)
        : mRun(run), mInputs(inputs), mPictureOptions(pictureOptions), mObserver(observer),
          mAbortFlag(abortFlag)
    {
    }

    /// Writes the requested file and adds it, to be published, to `files`. Throws `FileError`,
    /// `Aborted`, `usage_error` for a result that the format of the file cannot hold, and
    /// `runtime_error` if no picture can be painted.
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
