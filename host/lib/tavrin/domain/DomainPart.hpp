#pragma once

#include <tavrin/base/Export.hpp>

#include <string>

namespace tavrin
{

/// The kind of element of a domain that a function's values live on, such as its points or cells.
/// Two parts are equal when they have the same name.
class TAVRIN_API DomainPart
{
public:
    explicit constexpr DomainPart(const char* name) : mName(name) {}

    std::string getName() const { return mName; }

    bool operator==(const DomainPart& other) const { return getName() == other.getName(); }

private:
    const char* mName;
};

namespace detail
{

/// One value per cell.
inline constexpr DomainPart Cells("Cells");

}

}
