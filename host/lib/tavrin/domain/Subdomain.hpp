#pragma once

#include <tavrin/domain/Domain.hpp>

#include <memory>
#include <vector>

namespace tavrin
{

/// Some elements of one part of another domain.
class TAVRIN_API Subdomain final : public Domain
{
public:
    /// Element i of the subdomain is element `lookup[i]` of the part of the parent. Throws
    /// `logic_error` for a missing parent or an element that it does not have.
    Subdomain(std::shared_ptr<const Domain> parent, const DomainPart& part,
              std::vector<std::size_t> lookup);

    const std::shared_ptr<const Domain>& parent() const { return mParent; }

    /// The part of the parent whose elements are taken.
    const DomainPart& subclassedPart() const { return mPart; }

    /// The parent's element for each element of the subdomain.
    const std::vector<std::size_t>& getLookup() const { return mLookup; }

    std::size_t numElements(const DomainPart& part) const override;
    bool equals(const Domain& other) const override;

    static const TypeId<Subdomain>& classTypeId()
    {
        return typeId<Subdomain, Domain>("Subdomain", "part of a grid");
    }

private:
    std::shared_ptr<const Domain> mParent;
    DomainPart mPart;
    std::vector<std::size_t> mLookup;
};

}
