#include <tavrin/io/Loader.hpp>

#include <tavrin/base/LexicalCast.hpp>
#include <tavrin/io/ArrayChoice.hpp>
#include <tavrin/io/GridInfo.hpp>
#include <tavrin/io/Malformed.hpp>
#include <tavrin/io/SeriesReader.hpp>
#include <tavrin/value/SeriesValueArray.hpp>

#include <cmath>

namespace tavrin::io
{

namespace
{

const DomainPart& partOf(Association association)
{
    return association == Association::Points ? PointSetBase::Points : detail::Cells;
}

/// "0, 0.5, 1", the middle of a long list left out.
std::string enumerate(const std::vector<Collection::Step>& steps)
{
    constexpr std::size_t most = 10;
    std::string text;
    for (std::size_t i = 0; i < steps.size(); ++i)
    {
        if (steps.size() > most && i == most / 2)
        {
            i = steps.size() - most / 2;
            text += ", ...";
        }
        text += (text.empty() ? "" : ", ") + toText(steps[i].time);
    }
    return text;
}

bool isSameTime(double a, double b)
{
    return std::abs(a - b) <= 1e-9 * std::max(std::abs(a), std::abs(b));
}

std::size_t findStep(const Collection& collection, double time)
{
    const auto found = std::ranges::min_element(collection.steps, {},
                                                [&](const Collection::Step& step)
                                                { return std::abs(step.time - time); });
    if (found == collection.steps.end() || !isSameTime(found->time, time))
        throw usage_error("no step at t = " + toText(time) + "; there is " +
                          enumerate(collection.steps));
    return static_cast<std::size_t>(found - collection.steps.begin());
}

/// A file that is no series has one time or none.
void requireTime(const DataFile& file, const std::optional<double>& wanted)
{
    if (wanted && !file.time)
        throw usage_error("holds no time steps; leave out ?time=" + toText(*wanted));
    if (wanted && !isSameTime(*file.time, *wanted))
        throw usage_error("no step at t = " + toText(*wanted) + "; there is " + toText(*file.time));
}

}

class Loader::Implementation
{
public:
    Implementation(Warn warn, const volatile bool& abortFlag)
        : mAccess(std::make_shared<FileAccess>(std::move(warn), abortFlag))
    {
    }

    std::shared_ptr<const FunctionBase> loadFunction(const DataReference& reference);
    std::shared_ptr<const Domain> loadGrid(const DataReference& reference);
    FileInfo inspect(const DataReference& reference);

private:
    /// One file, and its time where it is a step of a series.
    struct Single
    {
        FilePlace place;
        std::unique_ptr<DataFile> file;
        std::optional<double> time;
    };

    /// Opens a file, or that of the step meant, by default the first, of a series.
    Single open(const DataReference& reference);
    std::shared_ptr<const FunctionBase> loadSingle(const DataReference& reference);
    std::shared_ptr<const FunctionBase> loadSeries(const DataReference& reference);
    /// The domain, or an equal one that was there before.
    std::shared_ptr<const Domain> share(std::shared_ptr<const Domain> domain);

    std::shared_ptr<FileAccess> mAccess;
    std::vector<std::weak_ptr<const Domain>> mDomains;
};

std::shared_ptr<const Domain> Loader::Implementation::share(std::shared_ptr<const Domain> domain)
{
    for (const auto& earlier : mDomains)
        if (auto known = earlier.lock(); known != nullptr && known->equals(*domain))
            return known;
    mDomains.push_back(domain);
    return domain;
}

Loader::Implementation::Single Loader::Implementation::open(const DataReference& reference)
{
    FilePlace place(reference.file);
    naming(place, [&] { requireFile(reference.file); });
    std::optional<double> time;
    if (isCollection(reference.file))
    {
        naming(place,
               [&]
               {
                   const Collection collection = readCollection(reference.file);
                   const std::size_t step =
                       reference.time ? findStep(collection, *reference.time) : 0;
                   place = placeOf(reference.file, collection, step);
                   time = collection.steps[step].time;
               });
    }
    auto file = naming(place, [&] { return mAccess->open(place); });
    if (!time)
    {
        naming(place, [&] { requireTime(*file, reference.time); });
        time = file->time;
    }
    return {std::move(place), std::move(file), time};
}

std::shared_ptr<const FunctionBase> Loader::Implementation::loadSingle(
    const DataReference& reference)
{
    const Single single = open(reference);
    return naming(single.place,
                  [&]
                  {
                      const DataFile::Array& array = chooseArray(*single.file, reference);
                      const Shape shape = chooseShape(array, reference.shape);
                      const BuiltGrid grid =
                          mAccess->build(*single.file, single.place, reference.dimension);
                      const StoredArray values = readValues(*single.file, array, grid);
                      std::vector<double> times;
                      if (single.time)
                          times.push_back(*single.time);
                      std::shared_ptr<const FunctionBase> function;
                      visitShape(shape,
                                 [&]<typename T>()
                                 {
                                     function = std::make_shared<const Function<T>>(
                                         share(grid.domain), partOf(array.association),
                                         wrapValues<T>(values), times, array.name);
                                 });
                      return function;
                  });
}

std::shared_ptr<const FunctionBase> Loader::Implementation::loadSeries(
    const DataReference& reference)
{
    const FilePlace place(reference.file);
    naming(place, [&] { requireFile(reference.file); });
    auto reader = std::make_shared<SeriesReader>(mAccess, reference.file, reference);
    reader->setDomain(share(reader->domain()));
    const DataFile::Array& array = reader->array();
    const DomainPart& part = partOf(array.association);
    const std::vector<double> times = reader->times();
    std::shared_ptr<const FunctionBase> function;
    visitShape(reader->shape(),
               [&]<typename T>()
               {
                   auto values = std::make_shared<const SeriesValueArray<T>>(
                       array.precision, times.size(), reader->domain()->numElements(part),
                       [reader](std::size_t step) { return wrapValues<T>(reader->load(step)); });
                   function = std::make_shared<const Function<T>>(
                       reader->domain(), part, std::move(values), times, array.name);
               });
    return function;
}

std::shared_ptr<const FunctionBase> Loader::Implementation::loadFunction(
    const DataReference& reference)
{
    return isCollection(reference.file) && !reference.time ? loadSeries(reference)
                                                           : loadSingle(reference);
}

std::shared_ptr<const Domain> Loader::Implementation::loadGrid(const DataReference& reference)
{
    if (reference.array || reference.on || reference.shape)
        throw usage_error(reference.file.string() +
                          ": a grid is wanted, so leave out #ARRAY, ?on= and ?shape=");
    const Single single = open(reference);
    return naming(
        single.place, [&]
        { return share(mAccess->build(*single.file, single.place, reference.dimension).domain); });
}

FileInfo Loader::Implementation::inspect(const DataReference& reference)
{
    const Single single = open(reference);
    FileInfo info;
    info.format = single.file->format;
    if (single.time)
        info.timeSteps.push_back(*single.time);
    for (const DataFile::Array& array : single.file->arrays)
    {
        const auto shape = shapeOf(array.components, array.componentNames);
        info.arrays.push_back({array.name, array.association, array.components, array.precision,
                               shape ? valueTypeNameOf(*shape) : ""});
    }
    naming(single.place,
           [&] {
               describeGrid(*mAccess->build(*single.file, single.place, reference.dimension).domain,
                            info);
           });
    if (!isCollection(reference.file))
        return info;

    const Collection collection = readCollection(reference.file);
    info.format = "time series of " + std::to_string(collection.steps.size()) +
                  (collection.steps.size() == 1 ? " file" : " files");
    info.timeSteps.clear();
    for (std::size_t step = 0; step < collection.steps.size(); ++step)
    {
        info.timeSteps.push_back(collection.steps[step].time);
        // What is missing is worth a word even where it was not asked for.
        const FilePlace place = placeOf(reference.file, collection, step);
        try
        {
            requireFile(place.path);
        }
        catch (const Malformed& error)
        {
            mAccess->warn(place, place.step + error.what());
        }
    }
    return info;
}

Loader::Loader(Warn warn, const volatile bool& abortFlag)
    : mImplementation(std::make_unique<Implementation>(std::move(warn), abortFlag))
{
}

Loader::~Loader() = default;

std::shared_ptr<const FunctionBase> Loader::loadFunction(const DataReference& reference)
{
    return mImplementation->loadFunction(reference);
}

std::shared_ptr<const Domain> Loader::loadGrid(const DataReference& reference)
{
    return mImplementation->loadGrid(reference);
}

FileInfo Loader::inspect(const DataReference& reference)
{
    return mImplementation->inspect(reference);
}

}
