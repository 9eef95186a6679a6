#pragma once

namespace tavrin::app
{

/// Runs the program `tavrin` and returns its exit code.
int runApplication(int argc, const char* const* argv) noexcept;

}
