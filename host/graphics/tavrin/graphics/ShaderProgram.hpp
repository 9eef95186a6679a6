#pragma once

#include <filesystem>

namespace tavrin::graphics
{

/// The source files of a shader program, which are read when a picture is painted.
struct ShaderProgram
{
    std::filesystem::path vertex;
    std::filesystem::path fragment;
    std::filesystem::path geometry;
};

}
