#pragma once

#include <optional>
#include <string>

namespace tavrin::app
{

/// Sets the number of threads that algorithms and file formats work with: the number given, 1 to
/// 1024, or without one that of OMP_NUM_THREADS or of the processors. Throws `usage_error` for any
/// other text.
void setThreads(const std::optional<std::string>& text);

/// Starts the threads, which then stay ready for use. OpenMP would end the process later if it could
/// not start them. Throws `runtime_error` if the system refuses.
void startThreads();

}
