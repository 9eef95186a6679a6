#include <tavrin/pipeline/OutputFiles.hpp>

#include <tavrin/pipeline/ArrowSegments.hpp>
#include <tavrin/pipeline/RunFailure.hpp>
#include <tavrin/pipeline/WholeFile.hpp>
#include <tavrin/pipeline/Words.hpp>

#include <tavrin/function/visit.hpp>
#include <tavrin/io/Writer.hpp>

namespace tavrin::pipeline
{

namespace
{

/// The only step of a function, moved to a time: algorithms know nothing of the time to which their
/// inputs were restricted.
std::shared_ptr<const FunctionBase> movedTo(double time, const FunctionBase& function)
{
    std::shared_ptr<const FunctionBase> moved;
    visitFunction<ValueTypes>(function,
                              [&]<typename T>(const Function<T>& typed)
                              {
                                  moved = std::make_shared<const Function<T>>(
                                      typed.domain(), typed.domainPart(), typed.values(),
                                      std::vector{time}, typed.name(), typed.validity());
                              });
    return moved;
}

}

bool isPublished(const OutputRequest& request, const AlgorithmRun& run)
{
    return request.isGraphics ? run.graphics(request.port) != nullptr
                              : run.result(request.port) != nullptr;
}

OutputReport OutputFiles::write(const OutputRequest& request, const AlgorithmRun& run,
                                const Context& context, const Iteration& iteration)
{
    if (request.isPicture())
        return writePicture(request, run, context, iteration);
    if (request.isGraphics)
        return writeSegments(request, run, iteration);
    const auto function = std::dynamic_pointer_cast<const FunctionBase>(run.result(request.port));
    if (function == nullptr)
        throw RunFailure("what was published on \"" + request.port +
                         "\" is no field, and no file format takes it");
    if (iteration.time && function->numTimeSteps() == 1)
        if (const auto moved = movedTo(*iteration.time, *function))
            return writeData(request, *moved, iteration);
    return writeData(request, *function, iteration);
}

void OutputFiles::publishFinished()
{
    for (const auto& file : mFinished)
        file->publish();
    mFinished.clear();
}

io::PendingFiles OutputFiles::finish()
{
    for (auto& [file, output] : mGrowing)
        mFinished.push_back(output->finish());
    mGrowing.clear();
    return std::move(mFinished);
}

OutputReport OutputFiles::writeData(const OutputRequest& request, const FunctionBase& function,
                                    const Iteration& iteration)
{
    const auto file = request.fileFor(iteration);
    const std::string name = !request.arrayName.empty() ? request.arrayName
                             : function.name().empty()  ? request.port
                                                        : function.name();
    const bool grows = !iteration.name().empty() && !hasNumberPlace(request.file);
    if (grows)
    {
        auto& output = mGrowing[file];
        if (output == nullptr)
            output = std::make_unique<io::FunctionOutput>(file, mAbortFlag);
        output->append(function, name);
    }
    else
        mFinished.push_back(io::prepareFunction(function, name, file, mAbortFlag));
    return {request.port,
            file,
            {{"values", function.values()->size()}, {"timeSteps", function.numTimeSteps()}}};
}

OutputReport OutputFiles::writePicture(const OutputRequest& request, const AlgorithmRun& run,
                                       const Context& context, const Iteration& iteration)
{
    const auto file = request.fileFor(iteration);
    auto scene = sceneOf(run.graphics(request.port), context.inputs, context.time);
    if (context.time)
        scene.timeLabel = "t = " + shortestText(*context.time);
    const auto format = graphics::pictureFormatOf(file.extension().string()).value();
    const auto picture =
        graphics::renderPicture(scene, request.picture.options(), format, mAbortFlag, &mObserver);
    mFinished.push_back(prepareWholeFile(
        file, {reinterpret_cast<const char*>(picture.bytes.data()), picture.bytes.size()},
        mAbortFlag));
    return {request.port, file, {{"width", picture.width}, {"height", picture.height}}};
}

OutputReport OutputFiles::writeSegments(const OutputRequest& request, const AlgorithmRun& run,
                                        const Iteration& iteration)
{
    const auto file = request.fileFor(iteration);
    const auto segments = arrowSegments(*run.graphics(request.port));
    mFinished.push_back(io::prepareFunctions(segments, file, mAbortFlag));
    return {request.port, file, {{"values", segments.front()->values()->size()}, {"timeSteps", 1}}};
}

}
