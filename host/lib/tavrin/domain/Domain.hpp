#pragma once

#include <tavrin/base/DataObject.hpp>
#include <tavrin/domain/DomainPart.hpp>

#include <cstddef>
#include <string_view>

namespace tavrin
{

/// Whether the elements of a domain are listed one by one or numbered by a regular grid.
enum class TopologyType
{
    Unstructured,
    Structured
};

/// How the points of a grid are defined.
enum class StructuringType
{
    Unstructured,
    Curvilinear,
    Rectilinear,
    Uniform
};

/// What the values of a function belong to.
enum class DomainType
{
    PointBased,
    CellBased
};

/// "unstructured", "structured".
TAVRIN_API std::string_view nameOf(TopologyType type);
/// "unstructured", "curvilinear", "rectilinear", "uniform".
TAVRIN_API std::string_view nameOf(StructuringType type);
/// "point-based", "cell-based".
TAVRIN_API std::string_view nameOf(DomainType type);

/// Something that functions are defined on. A domain has one or more parts (points, cells), each
/// with a number of elements; a function has one value per element of one part.
class TAVRIN_API Domain : public DataObject
{
public:
    /// Every part, in an input filter.
    static inline const DomainPart any{"any"};

    /// The number of elements of a part; 0 for a part that the domain does not have.
    virtual std::size_t numElements(const DomainPart& part) const = 0;

    /// Whether both domains are of one kind with the same elements and positions, so that values on one of
    /// them fit the other.
    virtual bool equals(const Domain& other) const = 0;

    static const TypeId<Domain>& classTypeId()
    {
        return typeId<Domain, DataObject>("Domain", "grid or point set");
    }
};

}
