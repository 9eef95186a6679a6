#include <tavrin/algorithm/Progress.hpp>

namespace tavrin
{

void ProgressReports::observeBy(ProgressObserver* observer)
{
    while (!mOpen.empty())
        close(*mOpen.back());
    mObserver = observer;
}

void ProgressReports::open(const ProgressReport& report)
{
    if (mObserver == nullptr)
        return;
    mOpen.push_back(&report);
    mObserver->opened(report);
}

void ProgressReports::close(const ProgressReport& report)
{
    if (std::erase(mOpen, &report) > 0)
        mObserver->closed(report);
}

}
