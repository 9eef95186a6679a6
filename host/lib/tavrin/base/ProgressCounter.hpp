#pragma once

#include <atomic>

namespace tavrin
{

/// Counts the finished elements of long work. Any thread may advance and read it at any time.
class ProgressCounter
{
public:
    ProgressCounter() = default;
    ProgressCounter(const ProgressCounter&) = delete;
    ProgressCounter& operator=(const ProgressCounter&) = delete;

    void advance(unsigned long elements = 1)
    {
        std::atomic_ref(mCount).fetch_add(elements, std::memory_order_relaxed);
    }

    unsigned long count() const { return std::atomic_ref(mCount).load(std::memory_order_relaxed); }

    /// For loops on a single thread that increment the count themselves.
    operator volatile unsigned long&() { return mCount; }

private:
    // Several threads may write it often, so that it has a cache line of its own.
    alignas(64) mutable unsigned long mCount = 0;
};

}
