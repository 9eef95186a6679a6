#pragma once

#include <exception>
#include <string>

namespace support
{

/// The text of the exception of class `Error` that an action throws. An exception of any other class
/// passes through and fails the test; without an exception the text is "no exception".
template<typename Error = std::exception, typename Action>
std::string errorOf(const Action& action)
{
    try
    {
        action();
    }
    catch (const Error& error)
    {
        return error.what();
    }
    return "no exception";
}

}
