#pragma once

#include <tavrin/graphics/ShaderProgram.hpp>

#include <epoxy/gl.h>

#include <array>
#include <string>

namespace tavrin::graphics::painter
{

/// Which fragments a pass lets through.
enum class Pass
{
    /// All, as if they were opaque.
    Everything = 0,
    OnlyOpaque = 1,
    OnlyTransparent = 2
};

/// A linked shader program. Each file is preceded by the language version, and a fragment shader
/// also by output.glsl, whose `writeColor` it calls.
class Program
{
public:
    /// The geometry stage may be left out. Throws `runtime_error` "FILE: cause" for a file that
    /// cannot be read or translated.
    explicit Program(const ShaderProgram& files);
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program();

    void use() const;
    void setPass(Pass pass) const;

    /// -1 where the program does not use the attribute.
    GLint attribute(const char* name) const;
    /// Uniforms that the program does not use are ignored. The program must be in use.
    void set(const std::string& name, float value) const;
    void set(const std::string& name, const std::array<float, 2>& value) const;
    void set(const std::string& name, const std::array<float, 3>& value) const;
    void set(const std::string& name, const std::array<float, 16>& columns) const;
    void setTextureUnit(const std::string& name, int unit) const;

private:
    GLint location(const std::string& name) const;

    GLuint mName;
};

/// The folder of the painter's shaders, ending in a separator.
std::string shaderFolder();

}
