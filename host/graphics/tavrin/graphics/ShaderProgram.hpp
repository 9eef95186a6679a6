#pragma once

#include <filesystem>

namespace tavrin::graphics
{

/// The files that a shader program is made from. They are read when something is painted.
struct ShaderProgram
{
    std::filesystem::path vertex;
    std::filesystem::path fragment;
    std::filesystem::path geometry;
};

}
