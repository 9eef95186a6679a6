#include "OutputWriter.hpp"

#include "../console/Failure.hpp"
#include "ArrowSegments.hpp"
#include "Picture.hpp"
#include "WholeFile.hpp"

#include <tavrin/io/Writer.hpp>

namespace tavrin::app
{

bool OutputWriter::isPublished(const OutputRequest& request) const
{
    return request.isGraphics ? mRun.graphics(request.port) != nullptr
                              : mRun.result(request.port) != nullptr;
}

RunReport::Output OutputWriter::write(const OutputRequest& request) const
{
    if (!request.isGraphics)
        return writeData(request);
    return request.isPicture() ? writePicture(request) : writeSegments(request);
}

RunReport::Output OutputWriter::writeData(const OutputRequest& request) const
{
    const auto function = std::dynamic_pointer_cast<const FunctionBase>(mRun.result(request.port));
    if (function == nullptr)
        throw RunFailure("what was published on \"" + request.port +
                         "\" is no field, and no file format takes it");
    const std::string& name = function->name().empty() ? request.port : function->name();
    io::writeFunction(*function, name, request.file, mAbortFlag);
    return {request.port,
            request.file,
            {{"values", function->values()->size()}, {"timeSteps", function->numTimeSteps()}}};
}

RunReport::Output OutputWriter::writePicture(const OutputRequest& request) const
{
    const auto scene = sceneOf(mRun.graphics(request.port), mInputs);
    const auto image = graphics::paint(scene, mPictureOptions, mAbortFlag);
    const auto bytes = graphics::encodePng(image);
    writeWholeFile(request.file, {reinterpret_cast<const char*>(bytes.data()), bytes.size()},
                   mAbortFlag);
    return {request.port, request.file, {{"width", image.width}, {"height", image.height}}};
}

RunReport::Output OutputWriter::writeSegments(const OutputRequest& request) const
{
    const auto segments = arrowSegments(*mRun.graphics(request.port));
    io::writeFunctions(segments, request.file, mAbortFlag);
    return {request.port,
            request.file,
            {{"values", segments.front()->values()->size()}, {"timeSteps", 1}}};
}

}
