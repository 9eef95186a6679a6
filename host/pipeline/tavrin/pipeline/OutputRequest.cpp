#include <tavrin/pipeline/OutputRequest.hpp>

#include <tavrin/pipeline/Words.hpp>

#include <tavrin/base/Suggestion.hpp>
#include <tavrin/io/OutputFile.hpp>
#include <tavrin/io/Writer.hpp>

#include <algorithm>
#include <set>

namespace tavrin::pipeline
{

namespace
{

using Output = AlgorithmDescription::Output;
using std::filesystem::path;

std::vector<std::string> namesOf(const std::vector<Output>& outputs)
{
    std::vector<std::string> names;
    std::ranges::transform(outputs, std::back_inserter(names), &Output::name);
    return names;
}

/// The output with the longest name that the word begins with, followed by `=`; null if there is
/// none.
const Output* findOutput(const std::string& word, const std::vector<Output>& outputs)
{
    const Output* longest = nullptr;
    for (const Output& output : outputs)
        if (word.starts_with(output.name + "=") &&
            (longest == nullptr || longest->name.size() < output.name.size()))
            longest = &output;
    return longest;
}

[[noreturn]] void refusePort(const std::string& word, const AlgorithmDescription& algorithm)
{
    const auto equals = word.find('=');
    if (algorithm.outputs.empty())
        throw usage_error("\"" + algorithm.name + "\" has no outputs; -o " + word +
                          " asks for one");
    const auto names = namesOf(algorithm.outputs);
    if (equals == std::string::npos)
        throw usage_error("-o " + word + " is not of the form PORT=FILE" +
                          suggestionFor({}, names));
    const std::string port = word.substr(0, equals);
    throw usage_error("\"" + algorithm.name + "\" has no output \"" + port + "\"" +
                      suggestionFor(port, names));
}

/// The extensions of pictures and of line segments.
std::vector<std::string> graphicsExtensions()
{
    std::vector<std::string> extensions = graphics::pictureExtensions();
    extensions.emplace_back(".vtp");
    return extensions;
}

void checkExtension(const OutputRequest& request)
{
    const std::vector<std::string> extensions =
        request.isGraphics ? graphicsExtensions() : io::writableExtensions();
    if (request.file.filename().empty())
        throw usage_error("output \"" + request.port + "\" needs a file, as in -o " +
                          shellWord(request.port + "=FILE" + extensions.front()));
    const std::string extension = request.file.extension().string();
    if (std::ranges::find(extensions, extension) == extensions.end())
        throw usage_error(
            request.file.string() + ": a " + (request.isGraphics ? "picture" : "data file") +
            " cannot have the extension \"" + extension + "\"; use " + joined(extensions, ", "));
}

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

}

OutputRequest OutputRequest::parse(const std::string& word, const AlgorithmDescription& algorithm)
{
    const Output* output = findOutput(word, algorithm.outputs);
    OutputRequest request;
    if (output != nullptr)
        request.file = word.substr(output->name.size() + 1);
    else if (algorithm.outputs.size() == 1 && word.find('=') == std::string::npos)
    {
        output = &algorithm.outputs.front();
        request.file = word;
    }
    else
        refusePort(word, algorithm);
    request.port = output->name;
    request.isGraphics = output->isGraphics;
    checkExtension(request);
    return request;
}

std::vector<OutputRequest> parseOutputs(const std::vector<std::string>& words,
                                        const AlgorithmDescription& algorithm)
{
    std::vector<OutputRequest> requests;
    std::ranges::transform(words, std::back_inserter(requests),
                           [&](const std::string& word)
                           { return OutputRequest::parse(word, algorithm); });
    if (!requests.empty())
        return requests;

    std::vector<std::string> calls;
    std::ranges::transform(algorithm.outputs, std::back_inserter(calls),
                           [](const Output& output)
                           { return "-o " + shellWord(output.name + "=FILE"); });
    if (!calls.empty())
        throw usage_error("the result would be lost; name an output: " + joined(calls, " or "));
    return requests;
}

void checkDestinations(const std::vector<path>& destinations, const std::vector<path>& inputs)
{
    for (std::size_t i = 0; i < destinations.size(); ++i)
    {
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

void checkFormats(const std::vector<OutputRequest>& requests,
                  const DataObjectBundle::Members& inputs)
{
    const Extents extents(inputs);
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
