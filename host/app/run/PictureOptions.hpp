#pragma once

#include <tavrin/pipeline/Plan.hpp>

#include <optional>
#include <string>

// NOLINTNEXTLINE(readability-identifier-naming): named by the library
namespace CLI
{
class App;
}

namespace tavrin::app
{

/// The appearance of pictures, as given on the command line.
class PictureOptions
{
public:
    /// Adds the options to a command.
    void declare(CLI::App& syntax);

    /// Applies them to the pictures of a plan and to the steps that paint them. Throws `usage_error`
    /// for a malformed word, and where there is no picture to apply a word to.
    void applyTo(pipeline::Plan& plan) const;

private:
    pipeline::PictureWords mWords;
    std::optional<std::string> mArrows;
};

}
