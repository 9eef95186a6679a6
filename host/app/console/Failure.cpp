#include "Failure.hpp"

#include "Console.hpp"

#include <tavrin/colormap/ColorMapFile.hpp>
#include <tavrin/io/FileError.hpp>

#include <new>

namespace tavrin::app
{

ExitCode reportException(Console& console, bool isVerbose, bool isInterrupted)
{
    const auto tell = [&](const std::string& text, ExitCode code)
    {
        console.line("error: " + text);
        return code;
    };
    try
    {
        if (isInterrupted)
        {
            console.line("interrupted");
            return Interrupted;
        }
        throw;
    }
    catch (const usage_error& error)
    {
        return tell(error.what(), WrongUsage);
    }
    catch (const io::FileError& error)
    {
        return tell(error.what(), FileFailed);
    }
    catch (const ColorMapFileError& error)
    {
        return tell(error.what(), FileFailed);
    }
    catch (const std::bad_alloc&)
    {
        return tell("not enough memory", RunFailed);
    }
    catch (const std::exception& error)
    {
        tell(error.what(), RunFailed);
        const auto* const carrier = dynamic_cast<const detail::BacktraceCarrier*>(&error);
        if (isVerbose && carrier != nullptr)
            console.lines(carrier->getBacktrace());
        return RunFailed;
    }
    catch (...)
    {
        return tell("an exception of unknown kind", RunFailed);
    }
}

}
