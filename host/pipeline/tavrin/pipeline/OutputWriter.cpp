#include <tavrin/pipeline/OutputWriter.hpp>

#include <tavrin/pipeline/ArrowSegments.hpp>
#include <tavrin/pipeline/Picture.hpp>
#include <tavrin/pipeline/RunFailure.hpp>
#include <tavrin/pipeline/WholeFile.hpp>

#include <tavrin/io/Writer.hpp>

namespace tavrin::pipeline
{

bool isPublished(const OutputRequest& request, const AlgorithmRun& run)
{
    return request.isGraphics ? run.graphics(request.port) != nullptr
                              : run.result(request.port) != nullptr;
}

RunReport::Output OutputWriter::write(const OutputRequest& request, io::PendingFiles& files) const
{
    if (!request.isGraphics)
        return writeData(request, files);
    return request.isPicture() ? writePicture(request, files) : writeSegments(request, files);
}

RunReport::Output OutputWriter::writeData(const OutputRequest& request,
                                          io::PendingFiles& files) const
{
    const auto function = std::dynamic_pointer_cast<const FunctionBase>(mRun.result(request.port));
    if (function == nullptr)
        throw RunFailure("what was published on \"" + request.port +
                         "\" is no field, and no file format takes it");
    const std::string& name = function->name().empty() ? request.port : function->name();
    files.push_back(io::prepareFunction(*function, name, request.file, mAbortFlag));
    return {request.port,
            request.file,
            {{"values", function->values()->size()}, {"timeSteps", function->numTimeSteps()}}};
}

RunReport::Output OutputWriter::writePicture(const OutputRequest& request,
                                             io::PendingFiles& files) const
{
    const auto scene = sceneOf(mRun.graphics(request.port), mInputs);
    const auto format = graphics::pictureFormatOf(request.file.extension().string());
    const auto picture =
        graphics::renderPicture(scene, mPictureOptions, format.value(), mAbortFlag, &mObserver);
    files.push_back(prepareWholeFile(
        request.file, {reinterpret_cast<const char*>(picture.bytes.data()), picture.bytes.size()},
        mAbortFlag));
    return {request.port, request.file, {{"width", picture.width}, {"height", picture.height}}};
}

RunReport::Output OutputWriter::writeSegments(const OutputRequest& request,
                                              io::PendingFiles& files) const
{
    const auto segments = arrowSegments(*mRun.graphics(request.port));
    files.push_back(io::prepareFunctions(segments, request.file, mAbortFlag));
    return {request.port,
            request.file,
            {{"values", segments.front()->values()->size()}, {"timeSteps", 1}}};
}

}
