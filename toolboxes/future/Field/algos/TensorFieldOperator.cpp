#include <tavrin/algorithm/AlgorithmRegister.hpp>
#include <tavrin/function/bothValid.hpp>
#include <tavrin/function/mapValues.hpp>
#include <tavrin/function/visit.hpp>

#include <sstream>

namespace
{

using namespace tavrin;

/// The value types that the operations work on, in the order of their display names.
using OperandTypes = TypeList<Scalar, Vector2, Vector3, Vector4, Matrix2, Matrix3, Matrix4>;

template<typename T>
concept IsScalar = T::rank == 0;

template<typename T>
concept IsVector = T::rank == 1;

template<typename T>
concept IsMatrix = T::rank == 2;

/// A number as a stream writes it by default, for the names of operations.
std::string formatted(double number)
{
    std::ostringstream text;
    text << number;
    return text.str();
}

/// The text of a product in the name of a result.
std::string times(const std::string& factor, double number)
{
    return number == 1.0 ? factor : factor + " * " + formatted(number);
}

/// A name made of the operation and the names of its operands, or that of the operation alone where an
/// operand has no name, or the result would have an unwieldy one.
template<typename Operation, std::derived_from<FunctionBase>... Fields>
std::string nameOfResult(const Operation& operation, const Fields&... fields)
{
    constexpr std::size_t maximumLength = 100;
    if ((fields.name().empty() || ...))
        return operation.name();
    const std::string name = operation.nameOfResult(fields.name()...);
    return name.size() > maximumLength ? operation.name() : name;
}

/// The number that is compared with a band: a scalar itself, with its sign, or the norm of any other
/// value.
template<typename T>
double measure(const T& value)
{
    if constexpr (IsScalar<T>)
        return value[0];
    else
        return norm(value);
}

/// 1 where low <= number <= high, 0 elsewhere; free of branches, so that loops are vectorized.
double weightInBand(double number, double low, double high)
{
    return static_cast<double>((low <= number) & (number <= high));
}

class TensorFieldOperatorAlgorithm : public DataAlgorithm
{
public:
    struct Options : tavrin::Options
    {
        explicit Options(Control& control) : tavrin::Options(control)
        {
            add<FunctionBase>("Field A", "2D or 3D tensor field");
            add<FunctionBase>("Field B", "2D or 3D tensor field on matching grid");
            addSeparator();
            add<InputChoices>("Operator", "Operation to compute",
                              {"Norm of Field A", "Normalized Field A", "Trace of Field A",
                               "Clip Between C and D", "Mask Between C and D", "Scale ( A * C )",
                               "Linear Combine ( A*C+B*D )", "Multiply (A*B)*C"},
                              "Norm of Field A");
            add<double>("Scalar C", "Scalar Value", 1.0);
            add<double>("Scalar D", "Scalar Value", 1.0);
        }
    };

    struct DataOutputs : tavrin::DataOutputs
    {
        explicit DataOutputs(Control& control) : tavrin::DataOutputs(control)
        {
            add<FunctionBase>("Field");
        }
    };

    using DataAlgorithm::DataAlgorithm;

    void execute(const tavrin::Options& options, const volatile bool& abortFlag) override;

private:
    struct norm_op;
    struct normalize_op;
    struct trace_op;
    struct scale_op;
    struct clip_op;
    struct mask_op;
    struct inner_op;
    struct lin_op;
    struct maskTwo_op;

    template<typename Operation>
    class UnaryFunctor;
    template<typename Operation>
    class BinaryFunctor;

    void executeBinary(const tavrin::Options& options, const std::string& operation,
                       const volatile bool& abortFlag);
    bool isMatching(const FunctionBase& fieldB) const;

    template<typename Operation>
    void Execute(const Operation& operation, const volatile bool& abortFlag);
    template<typename Operation>
    void Execute2(const Operation& operation, const FunctionBase& fieldB,
                  const volatile bool& abortFlag);

    template<typename T>
    void add(const std::string& name, LargeVector<T> values);

    std::shared_ptr<const FunctionBase> mFieldA;
    /// The mask of the result.
    std::shared_ptr<const ValidityMask> mValidity;
};

/// r = |a|
struct TensorFieldOperatorAlgorithm::norm_op
{
    std::string name() const { return "Norm"; }

    std::string nameOfResult(const std::string& a) const { return "Norm of " + a; }

    template<typename T>
    Scalar operator()(const T& a) const
    {
        return norm(a);
    }
};

/// r = a / |a|; a value of norm 0 is left unchanged.
struct TensorFieldOperatorAlgorithm::normalize_op
{
    std::string name() const { return "normalize"; }

    std::string nameOfResult(const std::string& a) const { return "normalized " + a; }

    template<typename T>
    T operator()(const T& a) const
    {
        return normalized(a);
    }
};

/// r = sum of a(i, i)
struct TensorFieldOperatorAlgorithm::trace_op
{
    std::string name() const { return "trace"; }

    std::string nameOfResult(const std::string& a) const { return "trace of " + a; }

    template<IsMatrix T>
    Scalar operator()(const T& a) const
    {
        return trace(a);
    }

    template<typename T>
    [[noreturn]] void refuse() const
    {
        throw runtime_error("trace operation not available for the chosen data type");
    }
};

/// r = C a
struct TensorFieldOperatorAlgorithm::scale_op
{
    double c;

    std::string name() const { return "scaled by " + formatted(c); }

    std::string nameOfResult(const std::string& a) const
    {
        return a + " scaled by " + formatted(c);
    }

    template<typename T>
    T operator()(const T& a) const
    {
        return c * a;
    }
};

/// r = min(D, max(C, |a|)), with the scalar itself for |a| where a is one. The norm is clipped, not
/// the components.
struct TensorFieldOperatorAlgorithm::clip_op
{
    double c;
    double d;

    std::string name() const { return "clipped"; }

    std::string nameOfResult(const std::string& a) const { return "clipped " + a; }

    template<typename T>
    Scalar operator()(const T& a) const
    {
        return std::min(d, std::max(c, measure(a)));
    }
};

/// r = a where C <= |a| <= D, 0 a elsewhere, so that NaN and infinite components become NaN outside
/// the band. A scalar is compared with its sign and becomes a plain 0; NaN is kept.
struct TensorFieldOperatorAlgorithm::mask_op
{
    double c;
    double d;

    std::string name() const { return "masked"; }

    Scalar operator()(const Scalar& a) const { return a[0] < c || a[0] > d ? Scalar(0.0) : a; }

    std::string nameOfResult(const std::string& a) const { return "masked " + a; }

    template<typename T>
    T operator()(const T& a) const
    {
        return a * weightInBand(norm(a), c, d);
    }
};

/// r = (a b) C, with the product of scalars, of a value and a scalar, of vectors (dot product), of
/// matrices, or of a matrix and a vector.
struct TensorFieldOperatorAlgorithm::inner_op
{
    double c;

    std::string name() const { return "Inner Product of " + formatted(c); }

    std::string nameOfResult(const std::string& a, const std::string& b) const
    {
        return times(a + " * " + b, c);
    }

    template<typename T>
    T operator()(const T& a, const Scalar& b) const
    {
        return a * b[0] * c;
    }

    template<IsVector T>
    Scalar operator()(const T& a, const T& b) const
    {
        return dot(a, b) * c;
    }

    template<IsMatrix A, typename B>
    auto operator()(const A& a, const B& b) const -> decltype(multiply(a, b))
    {
        return c * multiply(a, b);
    }
};

/// r = a C + b D, for values of one type.
struct TensorFieldOperatorAlgorithm::lin_op
{
    double c;
    double d;

    std::string name() const
    {
        return "Linear combination A*" + formatted(c) + " + B*" + formatted(d);
    }

    std::string nameOfResult(const std::string& a, const std::string& b) const
    {
        return times(a, c) + " + " + times(b, d);
    }

    template<typename T>
    T operator()(const T& a, const T& b) const
    {
        return a * c + b * d;
    }

    template<typename A, typename B>
    [[noreturn]] void refuse() const
    {
        throw logic_error("Operation not defined for the given input data types: " +
                          valueTypeName<A>() + " * " + valueTypeName<B>() + ".");
    }
};

/// r = a where C <= |b| <= D, 0 a elsewhere; a scalar b is compared with its sign.
struct TensorFieldOperatorAlgorithm::maskTwo_op
{
    double c;
    double d;

    std::string name() const { return "masked by secondary field"; }

    std::string nameOfResult(const std::string& a, const std::string& b) const
    {
        return a + " masked by " + b;
    }

    template<typename A, typename B>
    A operator()(const A& a, const B& b) const
    {
        return a * weightInBand(measure(b), c, d);
    }
};

/// Applies an operation to all values of Field A. The operation's `refuse` is called for a type that
/// it does not take.
template<typename Operation>
class TensorFieldOperatorAlgorithm::UnaryFunctor
{
public:
    UnaryFunctor(TensorFieldOperatorAlgorithm& algorithm, const Operation& operation,
                 const volatile bool& abortFlag)
        : mAlgorithm(algorithm), mOperation(operation), mAbortFlag(abortFlag)
    {
    }

    template<typename T>
    void operator()(const Function<T>& fieldA) const
    {
        if constexpr (std::invocable<const Operation&, const T&>)
        {
            using Result = std::invoke_result_t<const Operation&, const T&>;
            const auto values = fieldA.values();
            Progress progress(mAlgorithm, "compute " + mOperation.name(), values->size());
            auto result = mapValues<Result>(*values, mOperation, progress, mAbortFlag);
            if (mAbortFlag)
                mAlgorithm.clearResult("Field");
            else
                mAlgorithm.add(nameOfResult(mOperation, fieldA), std::move(result));
        }
        else
            mOperation.template refuse<T>();
    }

private:
    TensorFieldOperatorAlgorithm& mAlgorithm;
    const Operation& mOperation;
    const volatile bool& mAbortFlag;
};

/// Applies an operation to all pairs of values of Field A and Field B.
template<typename Operation>
class TensorFieldOperatorAlgorithm::BinaryFunctor
{
public:
    BinaryFunctor(TensorFieldOperatorAlgorithm& algorithm, const Operation& operation,
                  const volatile bool& abortFlag)
        : mAlgorithm(algorithm), mOperation(operation), mAbortFlag(abortFlag)
    {
    }

    /// Returns whether the operation knows the pair of types.
    template<typename A, typename B>
    bool operator()(const Function<A>& fieldA, const Function<B>& fieldB) const
    {
        if constexpr (std::invocable<const Operation&, const A&, const B&>)
        {
            apply(fieldA, fieldB);
            return true;
        }
        else if constexpr (requires { mOperation.template refuse<A, B>(); })
            mOperation.template refuse<A, B>();
        else
            return false;
    }

private:
    template<typename A, typename B>
    void apply(const Function<A>& fieldA, const Function<B>& fieldB) const
    {
        const ValueArray<A>& a = *fieldA.values();
        const ValueArray<B>& b = *fieldB.values();
        using Result = std::invoke_result_t<const Operation&, const A&, const B&>;
        if (a.size() != b.size())
            throw runtime_error("data sizes of the input fields do not match");
        Progress progress(mAlgorithm, "compute " + mOperation.name(), a.size());
        auto result = mapValues<Result>(a, b, mOperation, progress, mAbortFlag);
        if (mAbortFlag)
            mAlgorithm.clearResult("Field");
        else
            mAlgorithm.add(nameOfResult(mOperation, fieldA, fieldB), std::move(result));
    }

    TensorFieldOperatorAlgorithm& mAlgorithm;
    const Operation& mOperation;
    const volatile bool& mAbortFlag;
};

void TensorFieldOperatorAlgorithm::execute(const tavrin::Options& options,
                                           const volatile bool& abortFlag)
{
    mFieldA = options.get<FunctionBase>("Field A");
    if (mFieldA == nullptr)
    {
        debugLog() << "Input Field A was not set." << std::endl;
        clearResult("Field");
        return;
    }
    mValidity = mFieldA->validity();

    const auto operation = options.get<std::string>("Operator");
    const auto c = [&] { return options.get<double>("Scalar C"); };
    const auto d = [&] { return options.get<double>("Scalar D"); };
    if (operation == "Normalized Field A")
        Execute(normalize_op{}, abortFlag);
    else if (operation == "Trace of Field A")
        Execute(trace_op{}, abortFlag);
    else if (operation == "Norm of Field A")
        Execute(norm_op{}, abortFlag);
    else if (operation == "Scale ( A * C )")
        Execute(scale_op{c()}, abortFlag);
    else if (operation == "Mask Between C and D")
        Execute(mask_op{c(), d()}, abortFlag);
    else if (operation == "Clip Between C and D")
        Execute(clip_op{c(), d()}, abortFlag);
    else
        executeBinary(options, operation, abortFlag);
}

void TensorFieldOperatorAlgorithm::executeBinary(const tavrin::Options& options,
                                                 const std::string& operation,
                                                 const volatile bool& abortFlag)
{
    const auto fieldB = options.get<FunctionBase>("Field B");
    if (fieldB == nullptr)
    {
        debugLog() << "Input Field B was not set." << std::endl;
        clearResult("Field");
        return;
    }
    if (!isMatching(*fieldB))
    {
        debugLog() << "Input Fields do not match in domain or timesteps." << std::endl;
        return;
    }
    mValidity = bothValid(*mFieldA, *fieldB);

    const auto c = options.get<double>("Scalar C");
    const auto d = options.get<double>("Scalar D");
    if (operation == "Multiply (A*B)*C")
        Execute2(inner_op{c}, *fieldB, abortFlag);
    else if (operation == "Linear Combine ( A*C+B*D )")
        Execute2(lin_op{c, d}, *fieldB, abortFlag);
    else if (operation == "Mask Field 1 if Field 2 Between C and D")
        Execute2(maskTwo_op{c, d}, *fieldB, abortFlag);
    else
        throw logic_error("The chosen operator is not handled appropriately in code");
}

bool TensorFieldOperatorAlgorithm::isMatching(const FunctionBase& fieldB) const
{
    return mFieldA->domain() == fieldB.domain() && mFieldA->domainPart() == fieldB.domainPart() &&
           mFieldA->numTimeSteps() == fieldB.numTimeSteps();
}

template<typename Operation>
void TensorFieldOperatorAlgorithm::Execute(const Operation& operation,
                                           const volatile bool& abortFlag)
{
    const UnaryFunctor<Operation> apply(*this, operation, abortFlag);
    if (visitFunction<OperandTypes>(*mFieldA, apply))
        return;
    std::cerr << "Nothing found! Bad!" << std::endl;
    debugLog() << "The operation does not take values of type " << mFieldA->valueTypeName() << '.'
               << std::endl;
}

template<typename Operation>
void TensorFieldOperatorAlgorithm::Execute2(const Operation& operation, const FunctionBase& fieldB,
                                            const volatile bool& abortFlag)
{
    const BinaryFunctor<Operation> apply(*this, operation, abortFlag);
    bool isKnown = false;
    visitFunction<OperandTypes>(
        *mFieldA, [&](const auto& a)
        { visitFunction<OperandTypes>(fieldB, [&](const auto& b) { isKnown = apply(a, b); }); });
    if (isKnown)
        return;
    std::cerr << "Nothing found! Bad!" << std::endl;
    debugLog() << "The operation does not take values of type " << mFieldA->valueTypeName()
               << " with values of type " << fieldB.valueTypeName() << '.' << std::endl;
}

template<typename T>
void TensorFieldOperatorAlgorithm::add(const std::string& name, LargeVector<T> values)
{
    setResult("Field", addData(mFieldA->domain(), mFieldA->domainPart(), std::move(values),
                               Precision::Float64, mFieldA->timeSteps(), name, mValidity));
}

const AlgorithmRegister<TensorFieldOperatorAlgorithm> registration(
    "Field/Tensor Field Operator", "Simple mathematical operations on one or two tensor fields.");

}
