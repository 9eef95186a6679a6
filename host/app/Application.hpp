#pragma once

namespace tavrin::app
{

/// The program `tavrin`, from the command line to the exit code. Throws nothing.
int runApplication(int argc, const char* const* argv) noexcept;

}
