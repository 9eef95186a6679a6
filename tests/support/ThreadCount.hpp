#pragma once

#include <omp.h>

namespace support
{

/// Sets the number of threads of parallel regions during its life.
class ThreadCount
{
public:
    explicit ThreadCount(int threads) { omp_set_num_threads(threads); }
    ThreadCount(const ThreadCount&) = delete;
    ThreadCount& operator=(const ThreadCount&) = delete;
    ~ThreadCount() { omp_set_num_threads(mPrevious); }

private:
    int mPrevious = omp_get_max_threads();
};

}
