#include <tavrin/graphics/Picture.hpp>

#include "../../process/PainterJob.hpp"
#include "../../process/PainterProcess.hpp"

namespace tavrin::graphics
{

namespace
{

PictureFile perform(const Scene& scene, const PictureOptions& options,
                    std::optional<PictureFormat> format, const volatile bool& abortFlag,
                    ProgressObserver* observer)
{
    checkPictureSize(options.width, options.height);
    checkFontScale(options.fontScale);
    process::SharedBytes job;
    process::writeJob(job, scene, options, format, abortFlag);
    return process::runPainter(job, abortFlag, observer);
}

}

Image paint(const Scene& scene, const PictureOptions& options, const volatile bool& abortFlag,
            ProgressObserver* observer)
{
    PictureFile picture = perform(scene, options, std::nullopt, abortFlag, observer);
    return {picture.width, picture.height, std::move(picture.bytes)};
}

PictureFile renderPicture(const Scene& scene, const PictureOptions& options, PictureFormat format,
                          const volatile bool& abortFlag, ProgressObserver* observer)
{
    return perform(scene, options, format, abortFlag, observer);
}

}
