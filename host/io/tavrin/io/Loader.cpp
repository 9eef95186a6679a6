#include <tavrin/io/Loader.hpp>

#include <tavrin/io/ArrayChoice.hpp>
#include <tavrin/io/FileInspection.hpp>
#include <tavrin/io/series/SeriesReader.hpp>
#include <tavrin/value/LexicalCast.hpp>
#include <tavrin/value/SeriesValueArray.hpp>

#include <algorithm>
#include <map>
#include <ranges>
#include <tuple>

namespace tavrin::io
{

namespace
{

const DomainPart& partOf(Association association)
{
    return association == Association::Points ? PointSetBase::Points : detail::Cells;
}

using FunctionPointer = std::shared_ptr<const FunctionBase>;

std::size_t dimensionOf(const FunctionPointer& function)
{
    return dynamic_cast<const PointSetBase&>(*function->domain()).dimension();
}

bool hasCells(const FunctionPointer& function)
{
    return dynamic_cast<const CellComplex*>(function->domain().get()) != nullptr;
}

/// Adds the arrays that are not known yet.
void addNew(const std::vector<DataFile::Array>& arrays, std::vector<DataFile::Array>& known)
{
    for (const DataFile::Array& array : arrays)
        if (std::ranges::none_of(
                known, [&](const DataFile::Array& other)
                { return other.name == array.name && other.association == array.association; }))
            known.push_back(array);
}

/// The mask of a function; null if all values are valid.
std::shared_ptr<const ValidityMask> validityOf(ValidityMask marks)
{
    if (std::ranges::find(marks, 0) == marks.end())
        return nullptr;
    return std::make_shared<const ValidityMask>(std::move(marks));
}

void requireOneBlock(const std::vector<Block>& blocks, const DataReference& reference,
                     const std::string& wanted)
{
    std::vector<std::string> names;
    std::ranges::transform(blocks, std::back_inserter(names),
                           [](const Block& block) { return '"' + block.name + '"'; });
    if (blocks.size() > 1)
        throw usage_error(reference.file.string() + ": has " + std::to_string(blocks.size()) +
                          " blocks, and one " + wanted +
                          " is wanted; choose one with ?block=: " + shortList(names));
}

}

class Loader::Implementation
{
public:
    Implementation(Warn warn, const volatile bool& abortFlag)
        : mAccess(std::make_shared<FileAccess>(std::move(warn), abortFlag))
    {
    }

    std::vector<FunctionPointer> loadFunctions(const DataReference& reference);
    FunctionPointer loadFunction(const DataReference& reference);
    std::shared_ptr<const Domain> loadGrid(const DataReference& reference);
    std::vector<double> timesOf(const DataReference& reference)
    {
        return findTimes(*mAccess, reference);
    }
    FileInfo inspect(const DataReference& reference) { return inspectFile(*mAccess, reference); }
    FileAccess& access() { return *mAccess; }

private:
    FunctionPointer load(const Block& block, const DataReference& reference);
    /// Loads a block whose first file is open already.
    FunctionPointer load(const Block& block, const std::shared_ptr<DataFile>& first,
                         const DataReference& reference);
    FunctionPointer loadSingle(const Block& block, const std::shared_ptr<DataFile>& opened,
                               const DataReference& reference);
    FunctionPointer loadSeries(const Block& block, DataFile& first, const DataReference& reference);
    /// The grid of a file, which is built once for several arrays if one of them is still there.
    BuiltGrid gridOf(const std::shared_ptr<DataFile>& file, const Block& block,
                     const DataReference& reference);
    void warnOfLeftOut(const std::string& what, const std::vector<std::string>& names,
                       std::size_t numBlocks, const DataReference& reference);
    bool isEmpty(const Block& block);
    /// Returns an equal domain that was loaded before, or else this one.
    std::shared_ptr<const Domain> share(std::shared_ptr<const Domain> domain);
    /// The same for the domain of one step, which is kept until that of another step is shared.
    std::shared_ptr<const Domain> shareInSeries(std::shared_ptr<const Domain> domain,
                                                const Block& block, const DataReference& reference);

    std::shared_ptr<FileAccess> mAccess;
    std::vector<std::weak_ptr<const Domain>> mDomains;
    struct LastGrid
    {
        std::weak_ptr<DataFile> file;
        std::optional<std::size_t> dimension;
        std::weak_ptr<const Domain> domain;
        /// Without its domain, so that it keeps none alive.
        BuiltGrid grid;
    };
    LastGrid mLastGrid;
    /// The grids of the steps that were loaded last, by the file of the series, the block and the
    /// wanted dimension.
    std::map<std::tuple<std::filesystem::path, std::string, std::optional<std::size_t>>,
             std::shared_ptr<const Domain>>
        mLatestDomains;
};

std::shared_ptr<const Domain> Loader::Implementation::share(std::shared_ptr<const Domain> domain)
{
    std::erase_if(mDomains, [](const auto& earlier) { return earlier.expired(); });
    for (const auto& earlier : mDomains)
        if (auto known = earlier.lock(); known != nullptr && known->equals(*domain))
            return known;
    mDomains.push_back(domain);
    return domain;
}

std::shared_ptr<const Domain> Loader::Implementation::shareInSeries(
    std::shared_ptr<const Domain> domain, const Block& block, const DataReference& reference)
{
    domain = share(std::move(domain));
    if (block.steps.front().time)
        mLatestDomains[{reference.file, block.name, reference.dimension}] = domain;
    return domain;
}

BuiltGrid Loader::Implementation::gridOf(const std::shared_ptr<DataFile>& file, const Block& block,
                                         const DataReference& reference)
{
    const bool isFromSameFile =
        mLastGrid.file.lock() == file && mLastGrid.dimension == reference.dimension;
    if (auto domain = mLastGrid.domain.lock(); isFromSameFile && domain != nullptr)
    {
        BuiltGrid grid = mLastGrid.grid;
        grid.domain = std::move(domain);
        return grid;
    }
    BuiltGrid grid = mAccess->build(*file, block.steps.front().place, reference.dimension);
    grid.domain = shareInSeries(std::move(grid.domain), block, reference);
    mLastGrid = {file, reference.dimension, grid.domain, grid};
    mLastGrid.grid.domain.reset();
    return grid;
}

FunctionPointer Loader::Implementation::loadSingle(const Block& block,
                                                   const std::shared_ptr<DataFile>& opened,
                                                   const DataReference& reference)
{
    DataFile& file = *opened;
    const Block::Step& step = block.steps.front();
    return naming(step.place,
                  [&]
                  {
                      const DataFile::Array& array = chooseArray(file.arrays, reference);
                      const ArrayReading reading = chooseReading(array, reference);
                      const BuiltGrid grid = gridOf(opened, block, reference);
                      const StoredArray values = readValues(file, array, grid);
                      requireReadable(values, reading);
                      const auto validity = validityOf(readValidity(file, array, grid));
                      std::vector<double> times;
                      if (const auto time = step.time ? step.time : file.time)
                          times.push_back(*time);
                      FunctionPointer function;
                      visitShape(reading.shape,
                                 [&]<typename T>()
                                 {
                                     function = std::make_shared<const Function<T>>(
                                         grid.domain, partOf(array.association),
                                         wrapValues<T>(values, reading), times, reading.name,
                                         validity, originOf(grid, array.association),
                                         reference.reach.value_or(0.0));
                                 });
                      return function;
                  });
}

FunctionPointer Loader::Implementation::loadSeries(const Block& block, DataFile& first,
                                                   const DataReference& reference)
{
    auto reader = std::make_shared<SeriesReader>(mAccess, block.steps, first, reference);
    reader->setDomain(share(reader->domain()));
    const DataFile::Array& array = reader->array();
    const DomainPart& part = partOf(array.association);
    const std::vector<double> times = reader->times();
    FunctionPointer function;
    visitShape(reader->reading().shape,
               [&]<typename T>()
               {
                   auto values = std::make_shared<const SeriesValueArray<T>>(
                       array.precision, times.size(), reader->domain()->numElements(part),
                       [reader](std::size_t step)
                       { return wrapValues<T>(reader->load(step), reader->reading()); });
                   function = std::make_shared<const Function<T>>(
                       reader->domain(), part, std::move(values), times, reader->reading().name,
                       validityOf(reader->takeValidity()), reader->origin(),
                       reference.reach.value_or(0.0));
               });
    return function;
}

FunctionPointer Loader::Implementation::load(const Block& block,
                                             const std::shared_ptr<DataFile>& first,
                                             const DataReference& reference)
{
    return block.steps.size() > 1 ? loadSeries(block, *first, reference)
                                  : loadSingle(block, first, reference);
}

FunctionPointer Loader::Implementation::load(const Block& block, const DataReference& reference)
{
    return load(block, openFirst(*mAccess, block, reference), reference);
}

FunctionPointer Loader::Implementation::loadFunction(const DataReference& reference)
{
    const auto blocks = findBlocks(*mAccess, reference);
    requireOneBlock(blocks, reference, "function");
    requireFiles(blocks);
    return load(blocks.front(), reference);
}

std::vector<FunctionPointer> Loader::Implementation::loadFunctions(const DataReference& reference)
{
    const auto blocks = findBlocks(*mAccess, reference);
    requireFiles(blocks);
    if (blocks.size() == 1)
        return {load(blocks.front(), reference)};

    struct Loaded
    {
        const Block* block;
        FunctionPointer function;
    };
    std::vector<Loaded> loaded;
    std::vector<DataFile::Array> arrays;
    std::vector<std::string> withoutArray;
    for (const Block& block : blocks)
    {
        const auto file = openFirst(*mAccess, block, reference);
        addNew(file->arrays, arrays);
        if (hasArray(file->arrays, reference))
            loaded.push_back({&block, load(block, file, reference)});
        else if (!isEmpty(block))
            withoutArray.push_back('"' + block.name + '"');
    }
    // The reference must mean the same array in all blocks.
    const std::string name =
        naming(FilePlace(reference.file), [&] { return chooseArray(arrays, reference).name; });
    warnOfLeftOut("array \"" + name + "\"", withoutArray, blocks.size(), reference);

    // Blocks without cells are not part of a field that has cells in other blocks.
    const auto isCloud = [](const Loaded& one) { return !hasCells(one.function); };
    if (!std::ranges::all_of(loaded, isCloud))
    {
        std::vector<std::string> withoutCells;
        for (const Loaded& one : loaded)
            if (isCloud(one) && one.function->values()->size() > 0)
                withoutCells.push_back('"' + one.block->name + '"');
        std::erase_if(loaded, isCloud);
        warnOfLeftOut("cells", withoutCells, blocks.size(), reference);
    }

    // A block in a plane or on an axis gets the coordinates that other blocks need, as zeros.
    const auto dimension = [](const Loaded& one) { return dimensionOf(one.function); };
    DataReference unified = reference;
    unified.dimension = std::ranges::max(loaded | std::views::transform(dimension));
    std::vector<FunctionPointer> functions;
    std::ranges::transform(loaded, std::back_inserter(functions),
                           [&](const Loaded& one) {
                               return dimension(one) == *unified.dimension
                                          ? one.function
                                          : load(*one.block, unified);
                           });
    return functions;
}

void Loader::Implementation::warnOfLeftOut(const std::string& what,
                                           const std::vector<std::string>& names,
                                           std::size_t numBlocks, const DataReference& reference)
{
    if (!names.empty())
        mAccess->warn(reference.file, "no " + what + " in " + std::to_string(names.size()) +
                                          " of " + std::to_string(numBlocks) +
                                          " blocks; left out: " + shortList(names));
}

/// Whether the block has no points at any step.
bool Loader::Implementation::isEmpty(const Block& block)
{
    return std::ranges::all_of(
        block.steps,
        [&](const Block::Step& step) {
            return naming(step.place, [&] { return mAccess->openAgain(step.place)->numPoints; }) ==
                   0;
        });
}

std::shared_ptr<const Domain> Loader::Implementation::loadGrid(const DataReference& reference)
{
    if (reference.refersToArray())
        throw usage_error(reference.file.string() +
                          ": a grid is wanted, so leave out #ARRAY, ?on=, ?shape=, ?component= and "
                          "?order=");
    const auto blocks = findBlocks(*mAccess, reference);
    requireOneBlock(blocks, reference, "grid");
    const FilePlace& place = blocks.front().steps.front().place;
    const auto file = openFirst(*mAccess, blocks.front(), reference);
    return naming(place, [&] { return gridOf(file, blocks.front(), reference).domain; });
}

Loader::Loader(Warn warn, const volatile bool& abortFlag)
    : mImplementation(std::make_unique<Implementation>(std::move(warn), abortFlag))
{
}

Loader::~Loader() = default;

std::vector<std::shared_ptr<const FunctionBase>> Loader::loadFunctions(
    const DataReference& reference)
{
    return mImplementation->access().reporting(
        [&] { return mImplementation->loadFunctions(reference); });
}

std::shared_ptr<const FunctionBase> Loader::loadFunction(const DataReference& reference)
{
    return mImplementation->access().reporting(
        [&] { return mImplementation->loadFunction(reference); });
}

std::shared_ptr<const Domain> Loader::loadGrid(const DataReference& reference)
{
    return mImplementation->access().reporting([&]
                                               { return mImplementation->loadGrid(reference); });
}

FileInfo Loader::inspect(const DataReference& reference)
{
    return mImplementation->access().reporting([&] { return mImplementation->inspect(reference); });
}

std::vector<double> Loader::timesOf(const DataReference& reference)
{
    return mImplementation->access().reporting([&] { return mImplementation->timesOf(reference); });
}

std::vector<std::filesystem::path> Loader::filesOf(const DataReference& reference)
{
    return mImplementation->access().filesOf(reference.file);
}

std::vector<std::filesystem::path> filesOf(const std::filesystem::path& file)
{
    const volatile bool neverAbort = false;
    return FileAccess({}, neverAbort).filesOf(file);
}

}
