#include <tavrin/base/Rtti.hpp>

#include <algorithm>
#include <iterator>

namespace tavrin
{

RTTI_TypeId::RTTI_TypeId(std::type_index index, Match match, std::vector<RTTI_TypeId> bases,
                         std::string name, std::string description)
    : mIndex(index), mMatches(match), mBases(std::move(bases)), mName(std::move(name)),
      mDescription(std::move(description))
{
}

bool RTTI_TypeId::isDerivedFrom(const RTTI_TypeId& base) const
{
    return *this == base || std::ranges::any_of(mBases, [&](const RTTI_TypeId& direct)
                                                { return direct.isDerivedFrom(base); });
}

std::vector<std::string> RTTICollection::descriptions() const
{
    std::vector<std::string> texts;
    std::ranges::transform(mIds, std::back_inserter(texts), &RTTI_TypeId::description);
    return texts;
}

bool RTTICollection::accepts(const RTTI& object) const
{
    return std::ranges::any_of(mIds, [&](const RTTI_TypeId& id) { return object.isA(id); });
}

}
