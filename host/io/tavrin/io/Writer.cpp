#include <tavrin/io/Writer.hpp>

#include <tavrin/io/OutputFile.hpp>
#include <tavrin/io/write/SeriesWriter.hpp>
#include <tavrin/io/write/StepWriter.hpp>

#include <algorithm>

namespace tavrin::io
{

namespace fs = std::filesystem;

namespace
{

/// Writes a file with one step of functions on a domain.
std::unique_ptr<PendingFile> prepareGridFile(const Domain& domain,
                                             std::span<const NamedFunction> functions,
                                             const fs::path& file, const volatile bool& abortFlag)
{
    auto output = std::make_unique<OutputFile>(file, abortFlag);
    findFormat(file)->makeWriter(domain, abortFlag)->write(functions, 0, output->stream());
    output->complete();
    return output;
}

/// An array without a name could not be asked for.
std::string arrayNameFor(const std::string& name)
{
    return name.empty() ? "values" : name;
}

}

void requireSuitable(const fs::path& file, const Domain& domain, std::size_t numTimeSteps)
{
    const auto extensions = extensionsFor(domain, numTimeSteps);
    if (extensions.empty())
        throw usage_error(file.string() + ": values on this kind of domain are not written");
    if (std::ranges::find(extensions, extensionOf(file)) != extensions.end())
        return;
    const std::string what = numTimeSteps > 1
                                 ? "a function with " + std::to_string(numTimeSteps) + " time steps"
                                 : describeGridKind(domain);
    throw usage_error(file.string() + ": " + what + " is written as " +
                      enumerate(extensions, "or"));
}

std::unique_ptr<PendingFile> prepareFunction(const FunctionBase& function,
                                             const std::string& arrayName, const fs::path& file,
                                             const volatile bool& abortFlag)
{
    requireSuitable(file, *function.domain(), function.numTimeSteps());
    const std::string name = arrayNameFor(arrayName);
    if (isSeries(file))
        return findFormat(file)->prepareSeries({function, name, file}, abortFlag);
    const std::vector<NamedFunction> functions{{function, name}};
    return prepareGridFile(*function.domain(), functions, file, abortFlag);
}

std::unique_ptr<PendingFile> prepareFunctions(
    const std::vector<std::shared_ptr<const FunctionBase>>& functions, const fs::path& file,
    const volatile bool& abortFlag)
{
    const auto isAlike = [&](const std::shared_ptr<const FunctionBase>& function)
    { return function->domain() == functions.front()->domain() && function->numTimeSteps() == 1; };
    if (functions.empty() || !std::ranges::all_of(functions, isAlike))
        throw logic_error("functions of one step on one domain are needed for one file");
    const Domain& domain = *functions.front()->domain();
    requireSuitable(file, domain, 1);
    if (!findFormat(file)->holdsSeveralArrays)
        throw usage_error(file.string() + ": a file with this extension holds one array");
    std::vector<NamedFunction> named;
    named.reserve(functions.size());
    for (const auto& function : functions)
        named.push_back({*function, arrayNameFor(function->name())});
    return prepareGridFile(domain, named, file, abortFlag);
}

void writeFunction(const FunctionBase& function, const std::string& arrayName, const fs::path& file,
                   const volatile bool& abortFlag)
{
    prepareFunction(function, arrayName, file, abortFlag)->publish();
}

}
