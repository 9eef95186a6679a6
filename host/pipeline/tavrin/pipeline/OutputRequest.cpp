#include <tavrin/pipeline/OutputRequest.hpp>

#include <tavrin/pipeline/NameMatch.hpp>
#include <tavrin/pipeline/Plan.hpp>
#include <tavrin/pipeline/Words.hpp>

#include <tavrin/base/Suggestion.hpp>
#include <tavrin/io/Formats.hpp>

#include <algorithm>
#include <cctype>
#include <optional>

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

/// A place for a number in a text: "%d", or "%04d" for at least four digits.
struct NumberPlace
{
    std::size_t first;
    std::size_t length;
    std::size_t width;
};

/// The only place for a number in the name of a file, if there is one.
std::optional<NumberPlace> findNumberPlace(const std::string& name)
{
    std::optional<NumberPlace> found;
    for (auto first = name.find('%'); first != std::string::npos; first = name.find('%', first + 1))
    {
        auto end = first + 1;
        std::size_t width = 0;
        for (; end < name.size() && std::isdigit(static_cast<unsigned char>(name[end])) != 0 &&
               end < first + 3;
             ++end)
            width = 10 * width + static_cast<std::size_t>(name[end] - '0');
        if (end == name.size() || name[end] != 'd')
            continue;
        if (found)
            throw usage_error(name + ": has several places for a number; it takes one, as in "
                                     "frame_%04d.png");
        found = {first, end + 1 - first, width};
    }
    return found;
}

/// Divides FILE#NAME: FILE ends at the first "#" that follows an extension that is written.
std::pair<path, std::string> divideTarget(const std::string& target)
{
    const auto extensions = io::writableExtensions();
    for (auto hash = target.find('#'); hash != std::string::npos; hash = target.find('#', hash + 1))
    {
        const path file = target.substr(0, hash);
        if (std::ranges::find(extensions, file.extension().string()) != extensions.end())
            return {file, target.substr(hash + 1)};
    }
    return {target, ""};
}

void checkExtension(const OutputRequest& request)
{
    const std::vector<std::string> extensions =
        request.isGraphics ? graphicsExtensions() : io::writableExtensions();
    if (request.file.filename().empty())
        throw usage_error("output \"" + request.port + "\" needs a file, as in -o " +
                          shellWord(request.port + "=FILE" + extensions.front()));
    const std::string extension = request.file.extension().string();
    if (request.file.stem() == "-" && !request.file.has_parent_path() &&
        (request.isGraphics || request.file != "-.csv"))
        throw usage_error(request.file.string() +
                          ": standard output takes tables of data, as -.csv");
    if (std::ranges::find(extensions, extension) == extensions.end())
        throw usage_error(
            request.file.string() + ": a " + (request.isGraphics ? "picture" : "data file") +
            " cannot have the extension \"" + extension + "\"; use " + joined(extensions, ", "));
}

}

bool OutputRequest::isPicture() const
{
    return graphics::pictureFormatOf(file.extension().string()).has_value();
}

std::filesystem::path OutputRequest::fileFor(const Iteration& iteration) const
{
    if (iteration.name().empty())
        return file;
    const std::string name = file.filename().string();
    const auto place = findNumberPlace(name);
    if (!place)
        return file;
    std::string number = std::to_string(iteration.index);
    if (number.size() < place->width)
        number.insert(0, place->width - number.size(), '0');
    path numbered = file;
    return numbered.replace_filename(name.substr(0, place->first) + number +
                                     name.substr(place->first + place->length));
}

bool hasNumberPlace(const std::filesystem::path& file)
{
    return findNumberPlace(file.filename().string()).has_value();
}

OutputRequest OutputRequest::make(const AlgorithmDescription::Output& output,
                                  const std::string& target)
{
    OutputRequest request{.port = output.name, .isGraphics = output.isGraphics};
    const auto [file, arrayName] = divideTarget(target);
    request.file = file;
    request.arrayName = arrayName;
    checkExtension(request);
    if (request.isGraphics && !arrayName.empty())
        throw usage_error(target + ": a name after # is for data; \"" + request.port +
                          "\" is graphics");
    return request;
}

OutputRequest OutputRequest::parse(const std::string& word, const AlgorithmDescription& algorithm)
{
    if (const Output* const output = findOutput(word, algorithm.outputs))
        return make(*output, word.substr(output->name.size() + 1));
    const auto equals = word.find('=');
    if (equals == std::string::npos && algorithm.outputs.size() == 1)
        return make(algorithm.outputs.front(), word);
    if (equals != std::string::npos)
        if (const auto port =
                matchingName(word.substr(0, equals), namesOf(algorithm.outputs), "output"))
            return make(*std::ranges::find(algorithm.outputs, *port, &Output::name),
                        word.substr(equals + 1));
    refusePort(word, algorithm);
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

}
