#pragma once

#include <string>
#include <vector>

namespace tavrin::app
{

/// A script that makes a shell complete the command lines of the program.
struct CompletionScript
{
    std::string shell;
    std::string text;
};

const std::vector<CompletionScript>& completionScripts();

}
