#pragma once

#include <tavrin/pipeline/DataKinds.hpp>

#include <set>

namespace tavrin::pipeline
{

/// Makes data objects from references, and keeps them for further steps that use the same
/// reference.
class TAVRIN_API ObjectPool
{
public:
    using Members = DataObjectBundle::Members;

    /// The loader must outlive the pool.
    explicit ObjectPool(io::Loader& loader) : mLoader(loader) {}

    /// The objects of a reference for an option. `earlier` are the objects made so far for the same
    /// algorithm, and `shown` tells what color maps span. Throws what `DataKind::make` throws.
    Members make(const ObjectReference& reference, const InputBase& input, const Members& earlier,
                 const ShownNorms& shown);

    /// Releases the objects of all references but these, which are given by their texts.
    void keepOnly(const std::set<std::string>& texts);

private:
    struct Entry
    {
        const DataKind* kind;
        std::string text;
        InputKind option;
        Members objects;
    };

    io::Loader& mLoader;
    std::vector<Entry> mEntries;
};

}
