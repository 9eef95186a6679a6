#pragma once

#include <array>

namespace tavrin::app::examples
{

/// A pipeline for example data or for files of the user.
struct ExamplePipeline
{
    const char* file;
    const char* description;
    /// The text of the file.
    const char* text;
};

/// Made from the files of the source tree.
const std::array<ExamplePipeline, 2>& examplePipelines();

}
