#include <tavrin/io/FunctionOutput.hpp>

#include <tavrin/io/Formats.hpp>
#include <tavrin/io/OutputFile.hpp>
#include <tavrin/io/Writer.hpp>
#include <tavrin/io/write/GridFileWriter.hpp>
#include <tavrin/value/LexicalCast.hpp>

namespace tavrin::io
{

namespace
{

std::unique_ptr<FunctionWriter> makeWriter(const std::filesystem::path& file,
                                           const volatile bool& abortFlag)
{
    const FileFormat* const format = findFormat(file);
    if (format == nullptr || !format->isWritten())
        throw usage_error(file.string() + ": data is written as " +
                          enumerate(writableExtensions(), "or"));
    if (file.stem() == "-" && !file.has_parent_path() && !isStandardOutput(file))
        throw usage_error(file.string() + ": standard output takes tables, as -.csv");
    if (format->startSeries != nullptr)
        return format->startSeries(file, abortFlag);
    return std::make_unique<GridFileWriter>(*format, file, abortFlag);
}

}

FunctionOutput::FunctionOutput(std::filesystem::path file, const volatile bool& abortFlag)
    : mFile(std::move(file)), mWriter(makeWriter(mFile, abortFlag))
{
}

FunctionOutput::~FunctionOutput() = default;

void FunctionOutput::append(const FunctionBase& function, const std::string& arrayName)
{
    requireSuitable(mFile, *function.domain(), mNumSteps + function.numTimeSteps());
    requireFiniteTimes(mFile, function);
    const std::vector<double> times = writtenTimes(function);
    if (mNumSteps > 0 && times.front() <= mLastTime)
        throw usage_error(mFile.string() + ": the step at t = " + toText(times.front()) +
                          " does not come after the one at t = " + toText(mLastTime));
    mWriter->append(function, arrayName.empty() ? "values" : arrayName);
    mNumSteps += times.size();
    mLastTime = times.back();
}

std::unique_ptr<PendingFile> FunctionOutput::finish()
{
    if (mNumSteps == 0 || mWriter == nullptr)
        throw logic_error("a file is finished once, after something was appended");
    auto file = mWriter->finish();
    mWriter.reset();
    return file;
}

}
