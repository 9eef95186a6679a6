#pragma once

#include <tavrin/base/Export.hpp>
#include <tavrin/base/ProgressCounter.hpp>

#include <string>
#include <vector>

namespace tavrin
{

/// A piece of long work in progress. Its address identifies it as long as it is open.
struct ProgressReport
{
    std::string title;
    /// The count at the end of the work; 0 where that is not known.
    unsigned long total;
    /// Whether the work checks the abort flag.
    bool canAbort;
    const ProgressCounter& counter;
};

/// Watches the progress of long work, on the thread that does it.
class TAVRIN_API ProgressObserver
{
public:
    /// Work begins. The report may be read, from any thread, until `closed` is called with it.
    /// Reports may overlap in time in any order.
    virtual void opened(const ProgressReport& report) = 0;
    virtual void closed(const ProgressReport& report) = 0;

    virtual ~ProgressObserver() = default;
};

/// Passes the progress reports of an algorithm on to whoever observes the current execution.
class TAVRIN_API ProgressReports
{
public:
    /// From now on reports go to `observer`, which may be null. Reports that are still open, such as
    /// those that an algorithm keeps from one execution to the next, are closed before.
    void observeBy(ProgressObserver* observer);

    void open(const ProgressReport& report);

    /// A report that was closed already is ignored.
    void close(const ProgressReport& report);

private:
    ProgressObserver* mObserver = nullptr;
    std::vector<const ProgressReport*> mOpen;
};

}
