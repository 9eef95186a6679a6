#pragma once

#include <tavrin/base/Export.hpp>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tavrin
{

namespace detail
{

/// The return addresses of the calling thread, innermost first.
TAVRIN_API std::vector<void*> obtainBacktrace();

/// The part of tavrin's exceptions that carries a backtrace.
class TAVRIN_API BacktraceCarrier
{
public:
    /// One line per frame, innermost first: number, function (demangled where its name is known),
    /// library and offset.
    std::string getBacktrace() const;

protected:
    BacktraceCarrier() = default;
    ~BacktraceCarrier() = default;
    BacktraceCarrier(const BacktraceCarrier&) = default;
    BacktraceCarrier& operator=(const BacktraceCarrier&) = default;

private:
    std::vector<void*> mFrames = obtainBacktrace();
};

/// A standard exception with a backtrace captured where it was created.
template<typename StandardException>
class TAVRIN_API tavrin_exception_type : public StandardException, public BacktraceCarrier
{
public:
    explicit tavrin_exception_type(const std::string& text) : StandardException(text) {}
};

}

/// A programming error, of an algorithm or of its caller.
class TAVRIN_API logic_error : public detail::tavrin_exception_type<std::logic_error>
{
public:
    using tavrin_exception_type::tavrin_exception_type;
};

/// A failure that depends on data, files or the user.
class TAVRIN_API runtime_error : public detail::tavrin_exception_type<std::runtime_error>
{
public:
    using tavrin_exception_type::tavrin_exception_type;
};

/// A request that names something unknown or gives a value that does not fit, so that the user can
/// correct it without changing the data.
class TAVRIN_API usage_error : public runtime_error
{
public:
    using runtime_error::runtime_error;
};

/// A text that cannot be converted to the requested type.
class TAVRIN_API bad_lexical_cast : public runtime_error
{
public:
    using runtime_error::runtime_error;
};

/// A broken precondition of header code.
class TAVRIN_API assertion_failed : public logic_error
{
public:
    /// `check` is the text of the failed check, which is at `line` of the file `header`; `source` is
    /// the file that includes that header.
    assertion_failed(const std::string& check, const std::string& header, const std::string& source,
                     int line);
};

}
