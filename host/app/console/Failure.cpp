#include "Failure.hpp"

#include "Console.hpp"

#include <tavrin/colormap/ColorMapFile.hpp>
#include <tavrin/io/FileError.hpp>

#include <new>

namespace tavrin::app
{

ExitCode reportException(Console& console, bool isVerbose, bool isInterrupted)
{
    const auto fail = [&](const std::string& text, ExitCode code)
    {
        console.message("error: " + text);
        return code;
    };
    try
    {
        if (isInterrupted)
        {
            console.message("interrupted");
            return Interrupted;
        }
        throw;
    }
    catch (const usage_error& error)
    {
        return fail(error.what(), WrongUsage);
    }
    catch (const io::FileError& error)
    {
        return fail(error.what(), FileFailed);
    }
    catch (const ColorMapFileError& error)
    {
        return fail(error.what(), FileFailed);
    }
    catch (const std::bad_alloc&)
    {
        return fail("not enough memory", RunFailed);
    }
    catch (const std::exception& error)
    {
        fail(error.what(), RunFailed);
        const auto* const carrier = dynamic_cast<const detail::BacktraceCarrier*>(&error);
        if (isVerbose && carrier != nullptr)
            console.lines(carrier->getBacktrace());
        return RunFailed;
    }
    catch (...)
    {
        return fail("an exception of unknown kind", RunFailed);
    }
}

}
