#include <tavrin/function/Function.hpp>

#include <sstream>

namespace tavrin
{

namespace
{

void requireAscending(const std::vector<double>& timeSteps)
{
    const bool ascend = std::ranges::adjacent_find(timeSteps, [](double a, double b)
                                                   { return !(a < b); }) == timeSteps.end();
    if (!ascend)
        throw logic_error("the time steps of a function must ascend");
}

std::string describeTimeSteps(const std::vector<double>& steps)
{
    std::ostringstream text;
    if (steps.empty())
        return "steady";
    text << steps.size() << (steps.size() == 1 ? " time step at " : " time steps from ")
         << steps.front();
    if (steps.size() > 1)
        text << " to " << steps.back();
    return text.str();
}

}

std::string_view nameOf(TimeBehavior behavior)
{
    return behavior == TimeBehavior::Steady ? "steady" : "unsteady";
}

FunctionBase::FunctionBase(std::shared_ptr<const Domain> domain, const DomainPart& domainPart,
                           std::shared_ptr<const ValueArrayBase> values,
                           std::vector<double> timeSteps, std::string name,
                           std::shared_ptr<const ValidityMask> validity,
                           std::shared_ptr<const FileIndices> fileIndices, double reach)
    : mDomain(std::move(domain)), mDomainPart(domainPart), mValues(std::move(values)),
      mTimeSteps(std::move(timeSteps)), mName(std::move(name)), mValidity(std::move(validity)),
      mFileIndices(std::move(fileIndices)), mReach(reach)
{
    if (mValues == nullptr)
        throw logic_error("a function needs an array of values");
    requireAscending(mTimeSteps);
    if (mValidity != nullptr && mValidity->size() != mValues->size())
        throw logic_error("the mask of a function's values has another size than they have");
    if (!(mReach >= 0.0))
        throw logic_error("the reach of a function must not be negative");
}

DomainType FunctionBase::domainType() const
{
    return mDomainPart == PointSetBase::Points ? DomainType::PointBased : DomainType::CellBased;
}

std::vector<std::string> FunctionBase::getInfoStrings() const
{
    return {"values: " + valueTypeName() + ", stored as " +
                std::string(nameOf(mValues->precision())),
            "defined on: " + std::to_string(valuesPerStep()) + " " + mDomainPart.getName() + " (" +
                std::string(nameOf(domainType())) + ")",
            "time: " + describeTimeSteps(mTimeSteps)};
}

template class Function<Scalar>;
template class Function<Vector1>;
template class Function<Vector2>;
template class Function<Vector3>;
template class Function<Vector4>;
template class Function<Matrix1>;
template class Function<Matrix2>;
template class Function<Matrix3>;
template class Function<Matrix4>;
template class Function<Vector242>;
template class Function<Vector375>;

}
