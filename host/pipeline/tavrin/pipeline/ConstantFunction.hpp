#pragma once

#include <tavrin/function/Function.hpp>

namespace tavrin::pipeline
{

/// A function with the same value everywhere, which a text describes: `@constant:0.5`,
/// `@constant:1,0,0`, and the nine components of a matrix row by row,
/// `@constant:1,0,0,0,1,0,0,0,1`.
struct TAVRIN_API ConstantFunction
{
    /// One, two or three components of a scalar or vector, or nine of a matrix.
    std::vector<double> components;

    /// Whether a text describes such a function.
    static bool isMeant(const std::string& text) { return text.starts_with("@constant"); }

    /// Throws `usage_error` for a text without numbers, and for any other number of them.
    static ConstantFunction parse(const std::string& text);

    /// The function on the domain, the part and the time steps of the first function among the objects.
    /// It takes no memory for its values. Throws `usage_error` without a function.
    std::shared_ptr<const FunctionBase> make(
        const std::vector<std::shared_ptr<const DataObject>>& others) const;
};

}
