#include <tavrin/domain/Subdomain.hpp>

#include <tavrin/base/Exceptions.hpp>

#include <algorithm>

namespace tavrin
{

Subdomain::Subdomain(std::shared_ptr<const Domain> parent, const DomainPart& part,
                     std::vector<std::size_t> lookup)
    : mParent(std::move(parent)), mPart(part), mLookup(std::move(lookup))
{
    if (mParent == nullptr)
        throw logic_error("a subdomain needs a parent");
    const std::size_t elements = mParent->numElements(mPart);
    if (std::ranges::any_of(mLookup, [&](std::size_t element) { return element >= elements; }))
        throw logic_error("a subdomain has elements that its parent does not have");
}

std::size_t Subdomain::numElements(const DomainPart& part) const
{
    return part == mPart ? mLookup.size() : 0;
}

bool Subdomain::equals(const Domain& other) const
{
    const auto* const subdomain = dynamic_cast<const Subdomain*>(&other);
    return subdomain != nullptr && mPart == subdomain->mPart && mLookup == subdomain->mLookup &&
           mParent->equals(*subdomain->mParent);
}

}
