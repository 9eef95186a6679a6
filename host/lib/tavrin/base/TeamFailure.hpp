#pragma once

#include <atomic>
#include <exception>

namespace tavrin
{

/// Keeps the first exception of a team of threads, none of which may leave its parallel region:
///
///     TeamFailure failure;
///     #pragma omp parallel
///     failure.guard([&] { work(); });
///     failure.rethrow();
class TeamFailure
{
public:
    /// Calls `work()`, unless some thread has failed already.
    template<typename Work>
    void guard(const Work& work) noexcept
    {
        if (hasHappened())
            return;
        try
        {
            work();
        }
        catch (...)
        {
            if (!mHasHappened.exchange(true))
                mException = std::current_exception();
        }
    }

    bool hasHappened() const { return mHasHappened; }

    /// To be called after the parallel region.
    void rethrow() const
    {
        if (mException != nullptr)
            std::rethrow_exception(mException);
    }

private:
    std::atomic<bool> mHasHappened = false;
    std::exception_ptr mException;
};

}
