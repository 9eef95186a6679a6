#pragma once

#include <tavrin/algorithm/Input.hpp>
#include <tavrin/domain/Domain.hpp>
#include <tavrin/function/Function.hpp>

namespace tavrin::app
{

/// What a front end has to make for a data option.
enum class DataSort
{
    Function,
    Domain,
    Other
};

inline DataSort dataSortOf(const RTTICollection& types)
{
    const RTTI_TypeId& first = types.ids().front();
    if (first.isDerivedFrom(FunctionBase::classTypeId()))
        return DataSort::Function;
    if (first.isDerivedFrom(Domain::classTypeId()))
        return DataSort::Domain;
    return DataSort::Other;
}

}
