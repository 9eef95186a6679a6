#pragma once

#include <tavrin/graphics/ShaderProgram.hpp>

#include <epoxy/gl.h>

#include <array>
#include <string>

namespace tavrin::graphics::painter
{

/// Which fragments a pass draws.
enum class Pass
{
    /// All fragments, as if they were opaque.
    Everything = 0,
    OnlyOpaque = 1,
    OnlyTransparent = 2
};

/// A linked shader program. The language version is prepended to each file, and output.glsl to a
/// fragment shader, which calls its `writeColor`.
class Program
{
public:
    /// The geometry stage is optional. Throws `runtime_error` "FILE: CAUSE" for a file that cannot be
    /// read or compiled.
    explicit Program(const ShaderProgram& files);
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program();

    void use() const;
    void setPass(Pass pass) const;

    /// The location of an attribute; -1 if the program does not use it.
    GLint attribute(const char* name) const;
    /// Sets a uniform, which is ignored if the program does not use it. The program must be in use.
    void set(const std::string& name, float value) const;
    void set(const std::string& name, const std::array<float, 2>& value) const;
    void set(const std::string& name, const std::array<float, 3>& value) const;
    void set(const std::string& name, const std::array<float, 16>& columns) const;
    void setTextureUnit(const std::string& name, int unit) const;

private:
    GLint location(const std::string& name) const;

    GLuint mName;
};

/// Whether the program is the one that draws segments of a width in pixels.
bool isLineProgram(const ShaderProgram& files);

/// The folder of the painter's shaders, ending in a separator.
std::string shaderFolder();

}
