#pragma once

#include "AlgorithmTest.hpp"

#include <omp.h>

namespace tavrin
{

/// Points of any positions, without cells.
template<std::size_t G>
std::shared_ptr<const PointSet<G>> pointsAt(std::vector<Tensor<double, G>> points)
{
    return std::make_shared<PointCloud<G>>(std::make_shared<DefaultValueArray<Tensor<double, G>>>(
        std::move(points), Precision::Float64));
}

class SampleTest : public testing::Test
{
protected:
    SampleTest() { run.setText("Time", "0.0"); }
    ~SampleTest() override { omp_set_num_threads(mThreads); }

    /// Runs without the parser's traces. Returns what went to standard output.
    std::string execute(const volatile bool& abortFlag = goOn)
    {
        testing::internal::CaptureStdout();
        try
        {
            run.execute(abortFlag);
        }
        catch (...)
        {
            testing::internal::GetCapturedStdout();
            throw;
        }
        return testing::internal::GetCapturedStdout();
    }

    void connect(std::shared_ptr<const DataObject> field, std::shared_ptr<const DataObject> grid)
    {
        run.connect("Field", std::move(field));
        run.connect("Grid", std::move(grid));
    }

    template<typename T>
    std::shared_ptr<const Function<T>> result() const
    {
        return std::dynamic_pointer_cast<const Function<T>>(run.result("Sampled Field"));
    }

    template<typename T>
    std::vector<T> values() const
    {
        const auto function = result<T>();
        if (function == nullptr)
        {
            ADD_FAILURE() << "no result with values of type " << valueTypeName<T>();
            return {};
        }
        std::vector<T> scratch(function->values()->size());
        const auto read = function->values()->read(0, scratch);
        return {read.begin(), read.end()};
    }

    /// The text of the exception that the run ends with.
    template<typename Exception>
    std::string failure()
    {
        try
        {
            execute();
        }
        catch (const Exception& exception)
        {
            return exception.what();
        }
        return "no exception";
    }

    bool logged(const std::string& text) const
    {
        return run.debugLog().find(text) != std::string::npos;
    }

    AlgorithmRun run{makeRun("Field/Sample Field on Given Grid")};

private:
    int mThreads = omp_get_max_threads();
};

}
