#include <tavrin/pipeline/RunInputs.hpp>

#include <tavrin/pipeline/ColorMapInput.hpp>

#include <tavrin/colormap/ColorMapReference.hpp>

#include <algorithm>

namespace tavrin::pipeline
{

namespace
{

/// The sort of data that an option takes from a file, if it takes any.
std::optional<DataSort> dataSortOf(const InputBase& input)
{
    if (const auto* const data = dynamic_cast<const InputDataObject*>(&input))
        return app::dataSortOf(data->types());
    if (input.kind() == InputKind::Bundle)
        return DataSort::Function;
    return std::nullopt;
}

}

std::vector<std::filesystem::path> inputFiles(const std::vector<OptionAssignment>& assignments,
                                              const AlgorithmRun& run)
{
    std::vector<std::filesystem::path> files;
    for (const OptionAssignment& assignment : assignments)
    {
        const InputBase& input = run.input(assignment.option);
        const auto sort = dataSortOf(input);
        if (!sort || assignment.value.empty())
            continue;
        if (*sort != DataSort::Other)
            std::ranges::move(io::filesOf(io::DataReference::parse(assignment.value).file),
                              std::back_inserter(files));
        else if (takesColorMap(input))
            if (auto file = ColorMapReference::parse(assignment.value).file; !file.empty())
                files.push_back(std::move(file));
    }
    return files;
}

void RunInputs::apply(const std::vector<OptionAssignment>& assignments)
{
    std::vector<Objects> objects;
    std::ranges::transform(assignments, std::back_inserter(objects),
                           [&](const OptionAssignment& assignment) { return load(assignment); });
    for (std::size_t i = 0; i < assignments.size(); ++i)
        apply(assignments[i], objects[i]);
}

void RunInputs::apply(const OptionAssignment& assignment, const Objects& objects)
{
    const InputBase& input = mRun.input(assignment.option);
    const auto sort = dataSortOf(input);
    if (assignment.isDirect)
        mRun.setDirectly(assignment.option, assignment.value);
    else if (!sort)
        mRun.setText(assignment.option, assignment.value);
    else if (assignment.value.empty())
        mRun.connect(assignment.option, nullptr);
    else if (input.kind() == InputKind::Bundle)
    {
        auto& members = mBundles[assignment.option];
        members.insert(members.end(), objects.begin(), objects.end());
        mRun.connect(assignment.option, std::make_shared<DataObjectBundle>(members));
    }
    else
        mRun.connect(assignment.option, objects.empty() ? loadOther(assignment) : objects.front());
}

/// The functions or the grid that an assignment names: several functions only for a bundle, from a
/// file of several blocks. Nothing for all that is neither.
RunInputs::Objects RunInputs::load(const OptionAssignment& assignment)
{
    const InputBase& input = mRun.input(assignment.option);
    const auto sort = dataSortOf(input);
    if (!sort || *sort == DataSort::Other || assignment.isDirect || assignment.value.empty())
        return {};
    const auto reference = io::DataReference::parse(assignment.value);
    Objects objects;
    if (input.kind() == InputKind::Bundle)
        std::ranges::move(mLoader.loadFunctions(reference), std::back_inserter(objects));
    else if (*sort == DataSort::Function)
        objects.push_back(mLoader.loadFunction(reference));
    else
        objects.push_back(loadGrid(reference, input));
    mObjects.insert(mObjects.end(), objects.begin(), objects.end());
    return objects;
}

/// The grid of a file. Where the option takes no grid of so few dimensions, as that of a line along
/// an axis has, it gets more of them: their coordinates are 0.
RunInputs::Object RunInputs::loadGrid(io::DataReference reference, const InputBase& input)
{
    const auto& data = dynamic_cast<const InputDataObject&>(input);
    Object grid = mLoader.loadGrid(reference);
    if (reference.dimension)
        return grid;
    reference.dimension = dynamic_cast<const PointSetBase&>(*grid).dimension();
    while (!data.accepts(grid) && ++*reference.dimension <= 3)
        grid = mLoader.loadGrid(reference);
    return grid;
}

RunInputs::Object RunInputs::loadOther(const OptionAssignment& assignment)
{
    if (!takesColorMap(mRun.input(assignment.option)))
        throw usage_error("option \"" + assignment.option + "\" takes nothing that a file holds");
    mObjects.push_back(loadColorMap(assignment.value, mObjects));
    return mObjects.back();
}

}
