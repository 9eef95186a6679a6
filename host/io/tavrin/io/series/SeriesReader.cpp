#include <tavrin/io/series/SeriesReader.hpp>

#include <tavrin/io/ArrayChoice.hpp>
#include <tavrin/io/Malformed.hpp>
#include <tavrin/value/LexicalCast.hpp>

namespace tavrin::io
{

namespace
{

[[noreturn]] void complainAboutGrid(double time)
{
    throw Malformed("the grid differs from that of step 0; use ?time=" + toText(time) +
                    " to take one step alone");
}

}

SeriesReader::SeriesReader(std::shared_ptr<FileAccess> access, std::vector<Block::Step> steps,
                           DataFile& first, const DataReference& reference)
    : mAccess(std::move(access)), mSteps(std::move(steps)), mReference(reference)
{
    const FilePlace& place = mSteps.front().place;
    naming(FilePlace(place.named),
           [&]
           {
               mArray = chooseArray(first.arrays, mReference);
               mReading = chooseReading(mArray, mReference);
           });
    naming(place,
           [&]
           {
               mGrid = mAccess->build(first, place, mReference.dimension);
               addValidity(first, 0);
           });
    for (std::size_t step = 1; step < mSteps.size(); ++step)
        naming(mSteps[step].place,
               [&]
               {
                   const auto file = mAccess->open(mSteps[step].place);
                   requireAlike(first, *file, step);
                   addValidity(*file, step);
               });
}

void SeriesReader::addValidity(DataFile& file, std::size_t step)
{
    if (findValidityMask(file.arrays, mArray) == nullptr)
        return;
    const std::size_t numSteps = mSteps.size();
    const bool hasOrigin = origin() != nullptr;
    const ValidityMask validity = readValidity(
        file, mArray,
        hasOrigin ? mAccess->build(file, mSteps[step].place, mReference.dimension) : mGrid);
    if (mValidity.empty())
        mValidity.assign(validity.size() * numSteps, 1);
    if (validity.size() * numSteps != mValidity.size())
        complainAboutGrid(*mSteps[step].time);
    std::ranges::copy(validity,
                      mValidity.begin() + static_cast<std::ptrdiff_t>(step * validity.size()));
}

const DataFile::Array& SeriesReader::findArray(const DataFile& file) const
{
    const auto found = std::ranges::find_if(
        file.arrays, [this](const DataFile::Array& array)
        { return array.name == mArray.name && array.association == mArray.association; });
    if (found == file.arrays.end())
        throw Malformed("no array \"" + mArray.name + "\" on " +
                        std::string(nameOf(mArray.association)));
    if (found->components != mArray.components)
        throw Malformed("the array \"" + mArray.name + "\" has " +
                        std::to_string(found->components) + " components, and " +
                        std::to_string(mArray.components) + " in step 0");
    if (chooseReading(*found, mReference) != mReading)
        throw Malformed("the array \"" + mArray.name +
                        "\" does not have the shape or the order of components that it has in "
                        "step 0");
    return *found;
}

void SeriesReader::requireAlike(const DataFile& first, DataFile& file, std::size_t step) const
{
    if (file.structuring != first.structuring || file.numPoints != first.numPoints ||
        file.numCells != first.numCells || file.extent != first.extent ||
        file.origin != first.origin || file.spacing != first.spacing ||
        file.direction != first.direction)
        complainAboutGrid(*mSteps[step].time);
    findArray(file);
}

std::vector<double> SeriesReader::times() const
{
    std::vector<double> times;
    times.reserve(mSteps.size());
    for (const Block::Step& step : mSteps)
        times.push_back(*step.time);
    return times;
}

StoredArray SeriesReader::load(std::size_t step) const
{
    const FilePlace& place = mSteps[step].place;
    return naming(place,
                  [&]
                  {
                      const auto file = mAccess->open(place);
                      const DataFile::Array& array = findArray(*file);
                      const BuiltGrid grid =
                          step == 0 ? mGrid : mAccess->build(*file, place, mReference.dimension);
                      if (!grid.domain->equals(*mGrid.domain))
                          complainAboutGrid(*mSteps[step].time);
                      StoredArray values = readValues(*file, array, grid);
                      requireReadable(values, mReading);
                      return values;
                  });
}

}
