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

/// A field of any dimension and value type: a quantity with a value at every position of some region.
class TAVRIN_API FieldBase : public DataObject
{
public:
    /// The number of coordinates of a position: 1, 2 or 3.
    virtual std::size_t dimension() const = 0;

    /// "3-D Vector" and the like.
    virtual std::string valueTypeName() const = 0;

    /// The name of the quantity, such as that of an array in a file; may be empty.
    virtual std::string name() const = 0;

    /// The times at which the field has values; unbounded for a steady field.
    virtual TimeRange timeRange() const = 0;

    /// A box that holds all positions with a value; infinite for an unbounded field.
    virtual PointSetBase::BoundingBox boundingBox() const = 0;

    static const TypeId<FieldBase>& classTypeId()
    {
        return typeId<FieldBase, DataObject>("FieldBase", "field");
    }
};

}
