#pragma once

#include "Console.hpp"

#include <tavrin/algorithm/Algorithm.hpp>

#include <chrono>
#include <condition_variable>
#include <thread>
#include <vector>

namespace tavrin::app
{

enum class ProgressMode
{
    /// A bar on a terminal.
    Auto,
    /// A bar on a terminal, otherwise a line every second.
    Always,
    Never
};

/// Parses "auto", "always" and "never". Throws `usage_error` for any other text.
ProgressMode progressModeFrom(const std::string& text);

/// The progress of a piece of work.
struct ProgressState
{
    std::string title;
    unsigned long done = 0;
    /// The count at the end of the work; 0 if it is not known.
    unsigned long total = 0;
    double seconds = 0.0;
};

/// "Norm 45 %, 3.1 M/s, 12 s left".
std::string progressText(const ProgressState& state);

/// The same with a bar, in at most `width` characters.
std::string progressBar(const ProgressState& state, std::size_t width);

/// Shows the progress of a run on standard error while the object lives. Nothing is shown in the first
/// 0.3 seconds.
class ProgressBar final : public ProgressObserver
{
public:
    ProgressBar(Console& console, ProgressMode mode);
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;
    ~ProgressBar() override;

    void opened(const ProgressReport& report) override;
    void closed(const ProgressReport& report) override;

private:
    using Clock = std::chrono::steady_clock;

    struct OpenReport
    {
        const ProgressReport* report;
        Clock::time_point start;
    };

    void watch(const std::stop_token& stop);
    void show(const OpenReport& open);

    Console& mConsole;
    bool mIsShown;
    std::mutex mMutex;
    std::condition_variable_any mWakeUp;
    /// The report that was opened last is shown.
    std::vector<OpenReport> mReports;
    std::jthread mWatcher;
};

}
