#include <tavrin/pipeline/ObjectPool.hpp>

#include <algorithm>

namespace tavrin::pipeline
{

ObjectPool::Members ObjectPool::make(const ObjectReference& reference, const InputBase& input,
                                     const Members& earlier, const ShownNorms& shown)
{
    const auto* const single = dynamic_cast<const InputDataObject*>(&input);
    const auto isAccepted = [&](const std::shared_ptr<const DataObject>& object)
    { return single == nullptr || single->accepts(object); };
    for (const Entry& entry : mEntries)
        if (entry.kind == reference.kind && entry.text == reference.text &&
            entry.option == input.kind() && std::ranges::all_of(entry.objects, isAccepted))
            return entry.objects;

    Members objects =
        reference.kind->make(reference.parsed, {mLoader, earlier, shown}, input.kind(), isAccepted);
    // What depends on other objects is different for every step.
    if (!reference.dependsOnOthers())
        mEntries.push_back({reference.kind, reference.text, input.kind(), objects});
    return objects;
}

void ObjectPool::keepOnly(const std::set<std::string>& texts)
{
    std::erase_if(mEntries, [&](const Entry& entry) { return !texts.contains(entry.text); });
}

}
