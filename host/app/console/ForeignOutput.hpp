#pragma once

#include <memory>

namespace tavrin::app
{

class Console;

/// While the object lives, everything that code in the process prints through std::cout, std::cerr,
/// printf and the like goes through the console, which keeps it apart from its own lines.
class ForeignOutput
{
public:
    explicit ForeignOutput(Console& console);
    ForeignOutput(const ForeignOutput&) = delete;
    ForeignOutput& operator=(const ForeignOutput&) = delete;
    ~ForeignOutput();

private:
    class Redirection;

    std::unique_ptr<Redirection> mOutput;
    std::unique_ptr<Redirection> mError;
};

}
