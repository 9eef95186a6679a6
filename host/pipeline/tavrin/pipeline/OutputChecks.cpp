#include <tavrin/pipeline/OutputChecks.hpp>

#include <tavrin/pipeline/Words.hpp>

#include <tavrin/io/OutputFile.hpp>
#include <tavrin/io/Writer.hpp>

#include <algorithm>
#include <set>

namespace tavrin::pipeline
{

namespace
{

using std::filesystem::path;

bool isSameFile(const path& a, const path& b)
{
    std::error_code error;
    if (std::filesystem::equivalent(a, b, error))
        return true;
    const auto resolved = [&](const path& file)
    { return std::filesystem::weakly_canonical(std::filesystem::absolute(file, error), error); };
    return resolved(a) == resolved(b);
}

/// Whether writing the series may replace the file or the file that it links to.
bool isReplacedBySeries(const path& file, const path& series)
{
    std::error_code ignored;
    return io::isStepOf(file, series) ||
           io::isStepOf(std::filesystem::weakly_canonical(file, ignored), series);
}

/// The grids and the numbers of time steps of data objects.
struct Extents
{
    std::vector<const Domain*> domains;
    std::set<std::size_t> numTimeSteps;

    explicit Extents(const DataObjectBundle::Members& objects)
    {
        for (const auto& object : objects)
        {
            if (const auto* const function = dynamic_cast<const FunctionBase*>(object.get()))
            {
                domains.push_back(function->domain().get());
                numTimeSteps.insert(std::max<std::size_t>(1, function->numTimeSteps()));
            }
            else if (const auto* const domain = dynamic_cast<const Domain*>(object.get()))
            {
                // A result on another grid may have other times, or a single one.
                domains.push_back(domain);
                numTimeSteps.insert(1);
            }
        }
        if (numTimeSteps.empty())
            numTimeSteps.insert(1);
    }
};

std::vector<std::string> suitableExtensions(const Extents& extents)
{
    std::set<std::string> suitable;
    for (const Domain* const domain : extents.domains)
        for (const std::size_t steps : extents.numTimeSteps)
            suitable.merge(
                [&]
                {
                    const auto extensions = io::extensionsFor(*domain, steps);
                    return std::set(extensions.begin(), extensions.end());
                }());
    std::vector<std::string> ordered;
    std::ranges::copy_if(io::writableExtensions(), std::back_inserter(ordered),
                         [&](const std::string& extension)
                         { return suitable.contains(extension); });
    return ordered;
}

/// The extensions of files that hold several time steps.
std::vector<std::string> stepExtensions()
{
    std::vector<std::string> extensions;
    for (const io::FileFormat& format : io::fileFormats())
        if (format.startSeries != nullptr)
            extensions.emplace_back(format.extension);
    return extensions;
}

/// Whether one file holds what all iterations give.
bool canHoldSteps(const OutputRequest& request, const Loop& loop)
{
    const auto extensions = stepExtensions();
    return loop.kind == Loop::Kind::EachStep && !request.isGraphics &&
           std::ranges::find(extensions, request.file.extension().string()) != extensions.end();
}

}

void checkDestinations(const std::vector<path>& destinations, const std::vector<path>& inputs)
{
    if (std::ranges::count_if(destinations, io::isStandardOutput) > 1)
        throw usage_error("standard output is to be written twice");
    for (std::size_t i = 0; i < destinations.size(); ++i)
    {
        if (io::isStandardOutput(destinations[i]))
            continue;
        if (destinations[i].filename().empty())
            throw usage_error("\"" + destinations[i].string() + "\" names no file to write");
        for (std::size_t j = 0; j < i; ++j)
            if (isSameFile(destinations[i], destinations[j]) ||
                isReplacedBySeries(destinations[i], destinations[j]) ||
                isReplacedBySeries(destinations[j], destinations[i]))
                throw usage_error(destinations[i].string() + ": is to be written twice");
        for (const path& input : inputs)
        {
            if (isSameFile(destinations[i], input))
                throw usage_error(destinations[i].string() +
                                  ": is an input, and would be overwritten");
            if (isReplacedBySeries(input, destinations[i]))
                throw usage_error(input.string() +
                                  ": is an input, and would be overwritten by the steps of " +
                                  destinations[i].string());
        }
        io::requireWritable(destinations[i]);
    }
}

void checkNumberPlaces(const std::vector<OutputRequest>& requests, const Loop& loop)
{
    if (loop.isOnce())
        return;
    for (const OutputRequest& request : requests)
    {
        if (hasNumberPlace(request.file) || canHoldSteps(request, loop))
            continue;
        path numbered = request.file;
        numbered.replace_filename(request.file.stem().string() + "_%04d" +
                                  request.file.extension().string());
        throw usage_error(
            request.file.string() +
            ": is to be written many times; use a name with a place for the number, "
            "as in " +
            numbered.string() +
            (request.isGraphics || loop.kind == Loop::Kind::Sweep
                 ? ""
                 : ", or " + io::enumerate(stepExtensions(), "or") + " for all steps"));
    }
}

void checkDistinct(const std::vector<path>& destinations, const std::vector<path>& inputs)
{
    const auto resolved = [](const path& file)
    {
        std::error_code ignored;
        return std::filesystem::weakly_canonical(std::filesystem::absolute(file, ignored), ignored);
    };
    std::set<path> read;
    std::ranges::transform(inputs, std::inserter(read, read.end()), resolved);
    std::set<path> written;
    for (const path& file : destinations)
    {
        const path place = resolved(file);
        if (read.contains(place))
            throw usage_error(file.string() + ": is an input, and would be overwritten");
        if (!io::isStandardOutput(file) && !written.insert(place).second)
            throw usage_error(file.string() + ": is to be written twice");
    }
}

void checkFormats(const std::vector<OutputRequest>& requests,
                  const DataObjectBundle::Members& inputs, const Loop& loop)
{
    Extents extents(inputs);
    if (loop.kind == Loop::Kind::EachStep)
        extents.numTimeSteps.insert(1);
    if (extents.domains.empty())
        return;
    const auto suitable = suitableExtensions(extents);
    for (const OutputRequest& request : requests)
    {
        const std::string extension = request.file.extension().string();
        if (request.isGraphics || std::ranges::find(suitable, extension) != suitable.end())
            continue;
        const std::size_t steps = *extents.numTimeSteps.rbegin();
        throw usage_error(request.file.string() + ": \"" + extension +
                          "\" does not suit the grid of the input" +
                          (steps > 1 ? " with " + std::to_string(steps) + " time steps" : "") +
                          "; use " + joined(suitable, ", "));
    }
}

}
