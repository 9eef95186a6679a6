#pragma once

#include <optional>
#include <string>

namespace tavrin::app
{

/// Sets the number of threads for algorithms and file formats, 1 to 1024. Without a text that is
/// OpenMP's own choice: OMP_NUM_THREADS or the number of processors. Throws `usage_error` for any
/// other text.
void setThreads(const std::optional<std::string>& text);

/// Starts the threads, which then stay available. Throws `runtime_error` if the system refuses; if
/// OpenMP found out later, it would end the process.
void startThreads();

}
