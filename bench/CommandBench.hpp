#pragma once

namespace tavrin::bench
{

/// Whole commands, from start to written file, as processes of the program:
/// - a pipeline of four steps on 4.3M 3-vectors (102 MB) against "commands": the same steps with files
///   between them
/// - "Field/Info" on each of 100 time steps against "commands": one command for every step.
void addCommandRows();

}
