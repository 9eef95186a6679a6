#include "Program.hpp"

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/plugin/PluginRegistrationService.hpp>

#include <fstream>
#include <iterator>

namespace tavrin::graphics::painter
{

namespace
{

using std::filesystem::path;

std::string readSource(const path& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(stream), {}};
    if (!stream)
        throw runtime_error(file.string() + ": the shader cannot be read");
    return text;
}

/// The first line of a log.
std::string firstLine(const std::string& log)
{
    return log.substr(0, log.find_first_of(std::string("\n\0", 2)));
}

void attachStage(GLuint program, GLenum stage, const path& file)
{
    std::string source = "#version 330 core\n";
    if (stage == GL_FRAGMENT_SHADER)
        source += readSource(shaderFolder() + "output.glsl");
    // Compilers report errors with the line numbers of the file.
    source += "#line 1\n" + readSource(file);

    const GLuint shader = glCreateShader(stage);
    const char* const text = source.c_str();
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    GLint succeeded = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &succeeded);
    std::string log(1024, '\0');
    glGetShaderInfoLog(shader, static_cast<GLsizei>(log.size()), nullptr, log.data());
    glAttachShader(program, shader);
    glDeleteShader(shader);
    if (succeeded != GL_TRUE)
        throw runtime_error(file.string() + ": " + firstLine(log));
}

void link(GLuint program, const ShaderProgram& files)
{
    attachStage(program, GL_VERTEX_SHADER, files.vertex);
    attachStage(program, GL_FRAGMENT_SHADER, files.fragment);
    if (!files.geometry.empty())
        attachStage(program, GL_GEOMETRY_SHADER, files.geometry);
    glLinkProgram(program);
    GLint succeeded = GL_FALSE;
    glGetProgramiv(program, GL_LINK_STATUS, &succeeded);
    std::string log(1024, '\0');
    glGetProgramInfoLog(program, static_cast<GLsizei>(log.size()), nullptr, log.data());
    if (succeeded != GL_TRUE)
        throw runtime_error(files.vertex.string() + ": " + firstLine(log));
}

}

bool isLineProgram(const ShaderProgram& files)
{
    const std::string folder = shaderFolder() + "line/noShading/multiColor/";
    const auto isSame = [&](const std::filesystem::path& file, const char* name)
    {
        std::error_code ignored;
        return std::filesystem::equivalent(file, folder + name, ignored);
    };
    return isSame(files.vertex, "vertex.glsl") && isSame(files.fragment, "fragment.glsl") &&
           isSame(files.geometry, "geometry.glsl");
}

std::string shaderFolder()
{
    return PluginRegistrationService::getInstance().getResourcePath("utils/Graphics") + "shader/";
}

Program::Program(const ShaderProgram& files) : mName(glCreateProgram())
{
    try
    {
        link(mName, files);
    }
    catch (...)
    {
        glDeleteProgram(mName);
        throw;
    }
}

Program::~Program()
{
    glDeleteProgram(mName);
}

void Program::use() const
{
    glUseProgram(mName);
}

void Program::setPass(Pass pass) const
{
    glUniform1i(location("u_pass"), static_cast<GLint>(pass));
}

GLint Program::attribute(const char* name) const
{
    return glGetAttribLocation(mName, name);
}

void Program::set(const std::string& name, float value) const
{
    glUniform1f(location(name), value);
}

void Program::set(const std::string& name, const std::array<float, 2>& value) const
{
    glUniform2fv(location(name), 1, value.data());
}

void Program::set(const std::string& name, const std::array<float, 3>& value) const
{
    glUniform3fv(location(name), 1, value.data());
}

void Program::set(const std::string& name, const std::array<float, 16>& columns) const
{
    glUniformMatrix4fv(location(name), 1, GL_FALSE, columns.data());
}

void Program::setTextureUnit(const std::string& name, int unit) const
{
    glUniform1i(location(name), unit);
}

GLint Program::location(const std::string& name) const
{
    return glGetUniformLocation(mName, name.c_str());
}

}
