#include "HedgehogBench.hpp"

#include "RatioReporter.hpp"

#include <tavrin/algorithm/AlgorithmRun.hpp>
#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/function/Function.hpp>
#include <tavrin/value/WrappedValueArray.hpp>

#include <omp.h>
#include <vtkDoubleArray.h>
#include <vtkHedgeHog.h>
#include <vtkImageData.h>
#include <vtkNew.h>
#include <vtkPointData.h>

#include <fmt/format.h>

#include <iostream>

namespace tavrin::bench
{

namespace
{

constexpr GridSize gridSize{100, 100, 100};
constexpr std::size_t numArrows = gridSize[0] * gridSize[1] * gridSize[2];

/// One array of vectors, shared by tavrin and VTK.
class Input
{
public:
    Input()
    {
        mArray->SetName("v");
        mArray->SetNumberOfComponents(3);
        mArray->SetNumberOfTuples(numArrows);
        double* const data = mArray->GetPointer(0);
        for (std::size_t i = 0; i < 3 * numArrows; ++i)
            data[i] = static_cast<double>(i * 2654435761U % 1000U) / 500.0;
        mImage->SetDimensions(gridSize[0], gridSize[1], gridSize[2]);
        mImage->GetPointData()->SetVectors(mArray);
        auto grid = std::make_shared<UniformGrid<3>>(
            UniformGrid<3>::Layout{.size = gridSize, .spacing = Vector3(1.0, 1.0, 1.0)});
        mFunction = std::make_shared<Function<Vector3>>(
            std::move(grid), PointSetBase::Points,
            std::make_shared<WrappedValueArray<Vector3, double>>(data, numArrows, 3, nullptr),
            std::vector<double>{}, "v");
    }

    vtkImageData* image() const { return mImage; }
    const std::shared_ptr<const FunctionBase>& function() const { return mFunction; }

private:
    vtkNew<vtkDoubleArray> mArray;
    vtkNew<vtkImageData> mImage;
    std::shared_ptr<const FunctionBase> mFunction;
};

void showHedgehogs(const std::shared_ptr<const FunctionBase>& field)
{
    AlgorithmRun run(RegistrationService<AlgorithmFactory>::getInstance(), "Field/Show Hedgehogs");
    run.connect("Field", field);
    run.setText("Representation", "line");
    const volatile bool abortFlag = false;
    // The number of arrows would be written into the table.
    std::streambuf* const output = std::cout.rdbuf(nullptr);
    run.execute(abortFlag);
    std::cout.rdbuf(output);
    std::cout.clear();
    benchmark::DoNotOptimize(run.graphics("Hedgehogs"));
}

void showVtkHedgehogs(vtkImageData* image)
{
    vtkNew<vtkHedgeHog> hedgehog;
    hedgehog->SetInputData(image);
    hedgehog->Update();
}

}

void addHedgehogRows()
{
    const auto input = std::make_shared<Input>();
    for (const int threads : {1, 2})
    {
        const auto row = fmt::format("1M arrow records and line vertices, {} thread{}", threads,
                                     threads == 1 ? "" : "s");
        addContender(row, "tavrin",
                     [=]
                     {
                         omp_set_num_threads(threads);
                         showHedgehogs(input->function());
                     });
        addContender(row, "vtkHedgeHog", [=] { showVtkHedgehogs(input->image()); });
    }
}

}
