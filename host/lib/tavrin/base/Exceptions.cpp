#include <tavrin/base/Exceptions.hpp>

#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>

#include <cstdlib>
#include <memory>
#include <sstream>

namespace tavrin
{

namespace
{

constexpr int maximumDepth = 64;

std::string demangled(const char* symbol)
{
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(symbol, nullptr, nullptr, &status), &std::free);
    return status == 0 ? name.get() : symbol;
}

std::string describeFrame(const void* address)
{
    Dl_info info{};
    if (dladdr(address, &info) == 0 || info.dli_fname == nullptr)
        return "??";
    std::ostringstream text;
    text << (info.dli_sname != nullptr ? demangled(info.dli_sname) : "??") << " in "
         << info.dli_fname << " +0x" << std::hex
         << (static_cast<const char*>(address) - static_cast<const char*>(info.dli_fbase));
    return text.str();
}

}

std::vector<void*> detail::obtainBacktrace()
{
    std::vector<void*> frames(maximumDepth);
    const int depth = backtrace(frames.data(), maximumDepth);
    frames.resize(static_cast<std::size_t>(depth));
    return frames;
}

std::string detail::BacktraceCarrier::getBacktrace() const
{
    std::ostringstream text;
    for (std::size_t i = 0; i < mFrames.size(); ++i)
        text << '#' << i << "  " << describeFrame(mFrames[i]) << '\n';
    return text.str();
}

assertion_failed::assertion_failed(const std::string& check, const std::string& header,
                                   const std::string& source, int line)
    : logic_error(check + " (" + header + ":" + std::to_string(line) + ", included from " + source +
                  ")")
{
}

}
