#include <tavrin/pipeline/ConstantFunction.hpp>

#include <tavrin/value/LexicalCast.hpp>

#include <sstream>

namespace tavrin::pipeline
{

namespace
{

/// Many times the same value.
template<typename T>
class ConstantValueArray final : public ValueArray<T>
{
public:
    ConstantValueArray(const T& value, std::size_t size)
        : ValueArray<T>(Precision::Float64, true), mValue(value), mSize(size)
    {
    }

    std::size_t size() const override { return mSize; }
    T operator[](std::size_t) const override { return mValue; }
    std::span<const T> read(std::size_t, std::span<T> scratch) const override
    {
        std::ranges::fill(scratch, mValue);
        return scratch;
    }

private:
    T mValue;
    std::size_t mSize;
};

template<typename T>
std::shared_ptr<const FunctionBase> constant(const std::vector<double>& components,
                                             const FunctionBase& model)
{
    T value;
    std::ranges::copy(components, value.begin());
    return std::make_shared<const Function<T>>(
        model.domain(), model.domainPart(),
        std::make_shared<const ConstantValueArray<T>>(value, model.values()->size()),
        model.timeSteps(), "constant");
}

std::shared_ptr<const FunctionBase> constantOn(const FunctionBase& model,
                                               const std::vector<double>& components)
{
    switch (components.size())
    {
    case 1:
        return constant<Scalar>(components, model);
    case 2:
        return constant<Vector2>(components, model);
    case 3:
        return constant<Vector3>(components, model);
    default:
        return constant<Matrix3>(components, model);
    }
}

}

ConstantFunction ConstantFunction::parse(const std::string& text)
{
    const auto refuse = [&]
    {
        throw usage_error("\"" + text +
                          "\" is not of the form @constant:NUMBERS, with 1, 2, 3 or 9 components "
                          "as in @constant:1,0,0");
    };
    const std::string head = "@constant:";
    if (!text.starts_with(head))
        refuse();
    ConstantFunction function;
    std::istringstream parts(text.substr(head.size()));
    for (std::string part; std::getline(parts, part, ',');)
        try
        {
            function.components.push_back(lexicalCast<double>(part));
        }
        catch (const bad_lexical_cast&)
        {
            refuse();
        }
    const std::size_t count = function.components.size();
    if ((count < 1 || count > 3) && count != 9)
        refuse();
    return function;
}

std::shared_ptr<const FunctionBase> ConstantFunction::make(
    const std::vector<std::shared_ptr<const DataObject>>& others) const
{
    for (const auto& object : others)
        if (const auto* const function = dynamic_cast<const FunctionBase*>(object.get()))
            return constantOn(*function, components);
    throw usage_error("a constant function takes the grid of another function, and there is none");
}

}
