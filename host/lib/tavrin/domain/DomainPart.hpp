#pragma once

#include <tavrin/base/Export.hpp>

#include <string>
#include <utility>

namespace tavrin
{

/// The kind of element of a domain that a function's values live on, such as its points or cells. Parts
/// with the same name are equal.
class TAVRIN_API DomainPart
{
public:
    explicit DomainPart(std::string name) : mName(std::move(name)) {}

    const std::string& getName() const { return mName; }

    bool operator==(const DomainPart& other) const = default;

private:
    std::string mName;
};

namespace detail
{

/// One value per cell.
inline const DomainPart Cells("Cells");

}

}
