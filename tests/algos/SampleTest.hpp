#pragma once

#include "AlgorithmTest.hpp"

#include <support/captured.hpp>

/// Runs the algorithm and captures the traces of the parser, which go to standard output.
class SampleTest : public testing::Test
{
protected:
    SampleTest() { run.setText("Time", "0.0"); }

    /// Returns what went to standard output.
    std::string execute(const volatile bool& abortFlag = support::neverAbort)
    {
        return support::standardOutputOf([&] { run.execute(abortFlag); });
    }

    void connect(std::shared_ptr<const tavrin::DataObject> field,
                 std::shared_ptr<const tavrin::DataObject> grid)
    {
        run.connect("Field", std::move(field));
        run.connect("Grid", std::move(grid));
    }

    template<typename T>
    std::shared_ptr<const tavrin::Function<T>> result() const
    {
        return std::dynamic_pointer_cast<const tavrin::Function<T>>(run.result("Sampled Field"));
    }

    template<typename T>
    std::vector<T> values() const
    {
        const auto function = result<T>();
        if (function == nullptr)
        {
            ADD_FAILURE() << "no result with values of type " << tavrin::valueTypeName<T>();
            return {};
        }
        return support::valuesOf<T>(*function);
    }

    /// All hints of the last run, one per line.
    std::string hints() const
    {
        std::string lines;
        for (const std::string& hint : run.hints())
            lines += hint + '\n';
        return lines;
    }
    bool hinted(const std::string& text) const { return hints().find(text) != std::string::npos; }

    bool logged(const std::string& text) const
    {
        return run.debugLog().find(text) != std::string::npos;
    }

    tavrin::AlgorithmRun run{support::makeRun("Field/Sample Field on Given Grid")};
};
