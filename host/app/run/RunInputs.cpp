#include "RunInputs.hpp"

#include "ColorMapInput.hpp"

namespace tavrin::app
{

namespace
{

/// The sort of data that an option takes from a file, if it takes any.
std::optional<DataSort> dataSortOf(const InputBase& input)
{
    if (const auto* const data = dynamic_cast<const InputDataObject*>(&input))
        return data->dataSort();
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
        const auto sort = dataSortOf(run.input(assignment.option));
        if (sort && *sort != DataSort::Other && !assignment.value.empty())
            files.push_back(io::DataReference::parse(assignment.value).file);
    }
    return files;
}

void RunInputs::apply(const std::vector<OptionAssignment>& assignments)
{
    std::vector<Object> objects;
    std::ranges::transform(assignments, std::back_inserter(objects),
                           [&](const OptionAssignment& assignment) { return load(assignment); });
    for (std::size_t i = 0; i < assignments.size(); ++i)
        apply(assignments[i], objects[i]);
}

void RunInputs::apply(const OptionAssignment& assignment, Object object)
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
        members.push_back(std::move(object));
        mRun.connect(assignment.option, std::make_shared<DataObjectBundle>(members));
    }
    else
        mRun.connect(assignment.option, object != nullptr ? object : loadOther(assignment));
}

/// The function or grid that an assignment names; null for all that is neither.
RunInputs::Object RunInputs::load(const OptionAssignment& assignment)
{
    const auto sort = dataSortOf(mRun.input(assignment.option));
    if (!sort || *sort == DataSort::Other || assignment.isDirect || assignment.value.empty())
        return nullptr;
    const auto reference = io::DataReference::parse(assignment.value);
    if (*sort == DataSort::Function)
        mObjects.push_back(mLoader.loadFunction(reference));
    else
        mObjects.push_back(mLoader.loadGrid(reference));
    return mObjects.back();
}

RunInputs::Object RunInputs::loadOther(const OptionAssignment& assignment)
{
    if (!takesColorMap(mRun.input(assignment.option)))
        throw usage_error("option \"" + assignment.option + "\" takes nothing that a file holds");
    mObjects.push_back(loadColorMap(assignment.value, mObjects));
    return mObjects.back();
}

}
