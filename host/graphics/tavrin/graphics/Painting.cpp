#include <tavrin/graphics/Picture.hpp>

#include "../../process/PainterJob.hpp"
#include "../../process/PainterProcess.hpp"

namespace tavrin::graphics
{

Image paint(const Scene& scene, const PictureOptions& options, const volatile bool& abortFlag,
            ProgressObserver* observer)
{
    checkPictureSize(options.width, options.height);
    process::SharedBytes job;
    process::writePaintJob(job, scene, options, abortFlag);
    return {options.width, options.height, process::runPainter(job, abortFlag, observer)};
}

std::vector<std::uint8_t> encodePng(const Image& image, const volatile bool& abortFlag)
{
    process::SharedBytes job;
    process::writeEncodingJob(job, image, abortFlag);
    return process::runPainter(job, abortFlag, nullptr);
}

}
