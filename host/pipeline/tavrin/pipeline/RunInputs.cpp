#include <tavrin/pipeline/RunInputs.hpp>

#include <algorithm>

namespace tavrin::pipeline
{

std::vector<std::filesystem::path> inputFiles(std::span<const OptionAssignment> assignments,
                                              io::Loader& loader)
{
    std::vector<std::filesystem::path> files;
    for (const OptionAssignment& assignment : assignments)
        if (assignment.reference)
            std::ranges::move(assignment.reference->files(loader), std::back_inserter(files));
    return files;
}

void RunInputs::apply(std::span<const OptionAssignment> assignments)
{
    connectData(assignments, loadData(assignments));
    for (const OptionAssignment& assignment : assignments)
        if (assignment.isDirect)
            mRun.setDirectly(assignment.option, assignment.value);
        else if (!takesData(mRun.input(assignment.option)))
            mRun.setText(assignment.option, assignment.value);
}

/// The objects of each assignment.
std::vector<RunInputs::Members> RunInputs::loadData(std::span<const OptionAssignment> assignments)
{
    std::vector<Members> loaded(assignments.size());
    for (const bool dependsOnOthers : {false, true})
        for (std::size_t i = 0; i < assignments.size(); ++i)
            if (const auto& reference = assignments[i].reference;
                reference && reference->kind->dependsOnOthers == dependsOnOthers)
                loaded[i] = load(*reference, mRun.input(assignments[i].option));
    return loaded;
}

/// Connects every data option once, in the order in which the options are first given.
void RunInputs::connectData(std::span<const OptionAssignment> assignments,
                            const std::vector<Members>& loaded)
{
    using Connection = std::pair<std::string, Members>;
    std::vector<Connection> connections;
    for (std::size_t i = 0; i < assignments.size(); ++i)
    {
        const auto& [option, value, isDirect, reference] = assignments[i];
        if (isDirect || !takesData(mRun.input(option)))
            continue;
        auto connection = std::ranges::find(connections, option, &Connection::first);
        if (connection == connections.end())
            connection = connections.insert(connection, {option, {}});
        if (value.empty())
            connection->second.clear();
        std::ranges::copy(loaded[i], std::back_inserter(connection->second));
    }
    for (const auto& [option, members] : connections)
        connect(option, members);
}

RunInputs::Members RunInputs::load(const ObjectReference& reference, const InputBase& input)
{
    const auto* const single = dynamic_cast<const InputDataObject*>(&input);
    const auto isAccepted = [&](const std::shared_ptr<const DataObject>& object)
    { return single == nullptr || single->accepts(object); };
    Members members =
        reference.kind->make(reference.parsed, {mLoader, mObjects}, input.kind(), isAccepted);
    mObjects.insert(mObjects.end(), members.begin(), members.end());
    return members;
}

void RunInputs::connect(const std::string& option, const Members& members)
{
    if (members.empty())
        mRun.connect(option, nullptr);
    else if (mRun.input(option).kind() == InputKind::Bundle)
        mRun.connect(option, std::make_shared<DataObjectBundle>(members));
    else
        mRun.connect(option, members.front());
}

}
