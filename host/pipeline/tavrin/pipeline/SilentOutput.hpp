#pragma once

#include <iostream>
#include <sstream>

namespace tavrin::pipeline
{

/// Discards what is written to `std::cout` while the object lives.
class SilentOutput
{
public:
    SilentOutput() : mBuffer(std::cout.rdbuf(mSink.rdbuf())) {}
    SilentOutput(const SilentOutput&) = delete;
    SilentOutput& operator=(const SilentOutput&) = delete;
    ~SilentOutput() { std::cout.rdbuf(mBuffer); }

private:
    std::ostringstream mSink;
    std::streambuf* mBuffer;
};

}
