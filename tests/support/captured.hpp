#pragma once

#include <gtest/gtest.h>

#include <exception>
#include <string>

namespace support
{

/// What an action writes to standard output. Exceptions pass through.
template<typename Action>
std::string standardOutputOf(const Action& action)
{
    testing::internal::CaptureStdout();
    try
    {
        action();
    }
    catch (...)
    {
        testing::internal::GetCapturedStdout();
        throw;
    }
    return testing::internal::GetCapturedStdout();
}

/// What an action writes to standard error. Exceptions pass through.
template<typename Action>
std::string standardErrorOf(const Action& action)
{
    testing::internal::CaptureStderr();
    try
    {
        action();
    }
    catch (...)
    {
        testing::internal::GetCapturedStderr();
        throw;
    }
    return testing::internal::GetCapturedStderr();
}

}
