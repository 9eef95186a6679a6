#include "ProgressBar.hpp"

#include "Messages.hpp"

#include <tavrin/base/Exceptions.hpp>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <system_error>

namespace tavrin::app
{

namespace
{

using namespace std::chrono_literals;

constexpr auto delay = 300ms;
constexpr auto barInterval = 100ms;
constexpr auto lineInterval = 1s;

double shareOf(const ProgressState& state)
{
    return std::min(1.0, static_cast<double>(state.done) / static_cast<double>(state.total));
}

/// "3.1 M/s".
std::string rateText(double rate)
{
    for (const auto& [unit, name] : {std::pair(1e9, "G"), std::pair(1e6, "M"), std::pair(1e3, "k")})
        if (rate >= unit)
            return fmt::format("{:.3g} {}/s", rate / unit, name);
    return fmt::format("{:.3g} /s", rate);
}

std::string durationText(double seconds)
{
    const auto whole = static_cast<long>(std::ceil(std::min(seconds, 1e9)));
    if (whole < 60)
        return fmt::format("{} s", whole);
    if (whole < 3600)
        return fmt::format("{}:{:02} min", whole / 60, whole % 60);
    return fmt::format("{}:{:02} h", whole / 3600, whole / 60 % 60);
}

std::string figures(const ProgressState& state)
{
    const double rate = state.seconds > 0.0 ? static_cast<double>(state.done) / state.seconds : 0.0;
    if (state.total == 0)
        return fmt::format("{} done, {}", state.done, rateText(rate));
    std::string text =
        fmt::format("{:.0f} %, {}", std::floor(100.0 * shareOf(state)), rateText(rate));
    if (state.done > 0 && state.done < state.total)
        text += ", " + durationText(static_cast<double>(state.total - state.done) / rate) + " left";
    return text;
}

}

ProgressMode progressModeFrom(const std::string& text)
{
    if (text == "auto")
        return ProgressMode::Auto;
    if (text == "always")
        return ProgressMode::Always;
    if (text == "never")
        return ProgressMode::Never;
    throw usage_error("--progress: \"" + text + "\" is not auto, always or never");
}

std::string progressText(const ProgressState& state)
{
    return state.title + ' ' + figures(state);
}

std::string progressBar(const ProgressState& state, std::size_t width)
{
    constexpr std::size_t cells = 24;
    std::string bar = state.title + ' ';
    if (state.total > 0)
    {
        const auto filled = static_cast<std::size_t>(shareOf(state) * cells);
        bar += '[' + std::string(filled, '#') + std::string(cells - filled, '.') + "] ";
    }
    bar += figures(state);
    if (bar.size() > width)
        bar = progressText(state);
    return bar.substr(0, width);
}

ProgressBar::ProgressBar(Console& console, ProgressMode mode)
    : mConsole(console),
      mIsShown(mode == ProgressMode::Always || (mode == ProgressMode::Auto && console.isTerminal()))
{
    try
    {
        if (mIsShown)
            mWatcher = std::jthread([this](const std::stop_token& stop) { watch(stop); });
    }
    catch (const std::system_error&)
    {
        // The work goes on without a bar if there is no thread to draw it.
        mIsShown = false;
    }
}

ProgressBar::~ProgressBar()
{
    if (!mIsShown)
        return;
    mWatcher.request_stop();
    mWatcher.join();
    if (mConsole.isTerminal())
        mConsole.showStatus({});
}

void ProgressBar::opened(const ProgressReport& report)
{
    const std::scoped_lock lock(mMutex);
    mReports.push_back({&report, Clock::now()});
}

void ProgressBar::closed(const ProgressReport& report)
{
    const std::scoped_lock lock(mMutex);
    std::erase_if(mReports, [&](const OpenReport& open) { return open.report == &report; });
}

void ProgressBar::watch(const std::stop_token& stop)
{
    const Clock::duration interval =
        mConsole.isTerminal() ? Clock::duration(barInterval) : Clock::duration(lineInterval);
    std::unique_lock lock(mMutex);
    Clock::duration pause = delay;
    // The predicate is never true: only the end of the work ends a pause early.
    while (!mWakeUp.wait_for(lock, stop, pause, [] { return false; }) && !stop.stop_requested())
    {
        if (!mReports.empty())
            show(mReports.back());
        pause = interval;
    }
}

void ProgressBar::show(const OpenReport& open)
{
    const std::chrono::duration<double> elapsed = Clock::now() - open.start;
    const ProgressState state{oneLine(open.report->title), open.report->counter.count(),
                              open.report->total, elapsed.count()};
    if (mConsole.isTerminal())
        mConsole.showStatus(progressBar(state, mConsole.width() - 1));
    else
        mConsole.message("progress: " + progressText(state));
}

}
