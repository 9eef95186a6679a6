#include <tavrin/io/Writer.hpp>

#include <tavrin/io/FunctionOutput.hpp>
#include <tavrin/io/write/GridFileWriter.hpp>
#include <tavrin/value/LexicalCast.hpp>

#include <algorithm>
#include <cmath>

namespace tavrin::io
{

namespace fs = std::filesystem;

void requireSuitable(const fs::path& file, const Domain& domain, std::size_t numTimeSteps)
{
    if (const FileFormat* const format = findFormat(file);
        format != nullptr && isSuitable(*format, domain, numTimeSteps))
        return;
    const auto extensions = extensionsFor(domain, numTimeSteps);
    if (extensions.empty())
        throw usage_error(file.string() + ": values on this kind of domain are not written");
    const std::string what = numTimeSteps > 1
                                 ? "a function with " + std::to_string(numTimeSteps) + " time steps"
                                 : describeGridKind(domain);
    throw usage_error(file.string() + ": " + what + " is written as " +
                      enumerate(extensions, "or"));
}

void requireFiniteTimes(const fs::path& file, const FunctionBase& function)
{
    for (const double time : function.timeSteps())
        if (!std::isfinite(time))
            throw usage_error(file.string() + ": values at t = " + toText(time) +
                              " are not written, since a time must be finite");
}

std::unique_ptr<PendingFile> prepareFunction(const FunctionBase& function,
                                             const std::string& arrayName, const fs::path& file,
                                             const volatile bool& abortFlag)
{
    requireSuitable(file, *function.domain(), function.numTimeSteps());
    FunctionOutput output(file, abortFlag);
    output.append(function, arrayName);
    return output.finish();
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
    for (const auto& function : functions)
        requireFiniteTimes(file, *function);
    if (!findFormat(file)->holdsSeveralArrays)
        throw usage_error(file.string() + ": a file with this extension holds one array");
    std::vector<NamedFunction> named;
    named.reserve(functions.size());
    for (const auto& function : functions)
        named.push_back({*function, function->name().empty() ? "values" : function->name()});
    GridFileWriter writer(*findFormat(file), file, abortFlag);
    writer.write(named);
    return writer.finish();
}

void writeFunction(const FunctionBase& function, const std::string& arrayName, const fs::path& file,
                   const volatile bool& abortFlag)
{
    prepareFunction(function, arrayName, file, abortFlag)->publish();
}

}
