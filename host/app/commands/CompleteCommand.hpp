#pragma once

namespace tavrin::app
{

class Console;
struct Program;

/// Whether the command line is `tavrin complete SHELL ...`, which the scripts of `tavrin completion`
/// call. It is not one of the commands of the program, so that help does not show it.
bool isCompletion(int argc, const char* const* argv);

/// Prints what completes a command line, one candidate per line, as the script of the shell expects
/// it:
///
///     tavrin complete bash COMP_WORDBREAKS LINE       LINE ends at the cursor
///     tavrin complete zsh CURRENT WORD...             CURRENT ends at the cursor and may be quoted;
///     tavrin complete fish CURRENT WORD...            the words are the complete ones before it,
///                                                     without quotes and the name of the program
///
/// Candidates for bash and zsh are quoted, and end with a blank where the word ends. For zsh and fish
/// a tab and a description follow. A blank candidate for bash, or an empty one for zsh, says that the
/// common beginning of the others must not replace what was typed. Prints no message and ends after a few seconds, whatever happens.
void complete(int argc, const char* const* argv, const Program& program, Console& console);

}
