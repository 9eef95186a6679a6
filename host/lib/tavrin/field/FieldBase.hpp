#pragma once

#include <tavrin/domain/PointSet.hpp>

#include <limits>
#include <string>

namespace tavrin
{

/// Times from the first to the last, both included.
struct TimeRange
{
    double first = -std::numeric_limits<double>::infinity();
    double last = std::numeric_limits<double>::infinity();

    bool contains(double time) const { return first <= time && time <= last; }
};

/// A quantity with a value at every position of some region, whatever its dimension and type.
class TAVRIN_API FieldBase : public DataObject
{
public:
    /// The number of coordinates of a position: 1, 2 or 3.
    virtual std::size_t dimension() const = 0;

    /// "3-D Vector" and the like.
    virtual std::string valueTypeName() const = 0;

    /// What the values are, such as the name of an array in a file; may be empty.
    virtual std::string name() const = 0;

    /// No value exists at other times. Unbounded for a steady field.
    virtual TimeRange timeRange() const = 0;

    /// A box that no position with a value lies outside of, infinite where the field is.
    virtual PointSetBase::BoundingBox boundingBox() const = 0;

    /// Whether it takes a search through stored cells to find a position, which is faster for
    /// positions that come one after the other and lie together.
    virtual bool isSearched() const { return false; }

    static const TypeId<FieldBase>& classTypeId()
    {
        return typeId<FieldBase, DataObject>("FieldBase", "field");
    }
};

}
