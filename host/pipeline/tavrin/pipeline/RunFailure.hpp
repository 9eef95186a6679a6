#pragma once

#include <tavrin/colormap/ColorMapFile.hpp>
#include <tavrin/io/FileError.hpp>

#include <new>

namespace tavrin::pipeline
{

/// A run that ended without the result it was asked for.
class TAVRIN_API RunFailure : public runtime_error
{
public:
    using runtime_error::runtime_error;
};

/// Does a piece of work and adds the place to the message of an error, unless that names a file.
template<typename Work>
auto atPlace(const std::string& place, const Work& work)
{
    if (place.empty())
        return work();
    try
    {
        return work();
    }
    catch (const usage_error& error)
    {
        throw usage_error(place + error.what());
    }
    catch (const io::FileError&)
    {
        throw;
    }
    catch (const io::Aborted&)
    {
        throw;
    }
    catch (const ColorMapFileError&)
    {
        throw;
    }
    catch (const std::bad_alloc&)
    {
        throw;
    }
    catch (const std::exception& error)
    {
        throw RunFailure(place + error.what());
    }
}

}
