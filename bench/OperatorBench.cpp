#include "OperatorBench.hpp"

#include "RatioReporter.hpp"
#include "VtkThreads.hpp"

#include <tavrin/algorithm/AlgorithmRun.hpp>
#include <tavrin/base/LargeVector.hpp>
#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/function/Function.hpp>
#include <tavrin/value/WrappedValueArray.hpp>

#include <omp.h>
#include <vtkArrayCalculator.h>
#include <vtkDoubleArray.h>
#include <vtkFloatArray.h>
#include <vtkImageData.h>
#include <vtkNew.h>
#include <vtkPointData.h>

#include <fmt/format.h>

namespace tavrin::bench
{

namespace
{

constexpr GridSize gridSize{256, 256, 256};
constexpr std::size_t numValues = gridSize[0] * gridSize[1] * gridSize[2];

struct Operation
{
    const char* name;
    const char* option;
    std::size_t resultComponents;
    /// The same formula for `vtkArrayCalculator`, with the input called v.
    const char* formula;
};

constexpr Operation operations[] = {
    {"norm", "Norm of Field A", 1, "mag(v)"},
    {"scale", "Scale ( A * C )", 3, "v*0.5"},
    {"clip", "Clip Between C and D", 1, "min(1.5,max(0.5,mag(v)))"},
    {"mask", "Mask Between C and D", 3, "if(mag(v)>0.5,if(mag(v)<1.5,v,v*0),v*0)"},
};

/// One array of 16M 3-vectors, shared by tavrin and VTK.
template<typename Stored, typename VtkArray>
class Input
{
public:
    Input()
    {
        mArray->SetName("v");
        mArray->SetNumberOfComponents(3);
        mArray->SetNumberOfTuples(numValues);
        Stored* const data = mArray->GetPointer(0);
#pragma omp parallel for schedule(static)
        for (std::size_t i = 0; i < 3 * numValues; ++i)
            data[i] = static_cast<Stored>(static_cast<double>(i * 2654435761U % 1000U) / 500.0);
        mImage->SetDimensions(gridSize[0], gridSize[1], gridSize[2]);
        mImage->GetPointData()->AddArray(mArray);
        auto grid = std::make_shared<UniformGrid<3>>(
            UniformGrid<3>::Layout{.size = gridSize, .spacing = Vector3(1.0, 1.0, 1.0)});
        mFunction = std::make_shared<Function<Vector3>>(
            std::move(grid), PointSetBase::Points,
            std::make_shared<WrappedValueArray<Vector3, Stored>>(data, numValues, 3, nullptr),
            std::vector<double>{}, "v");
    }

    const Stored* data() const { return mArray->GetPointer(0); }
    vtkImageData* image() const { return mImage; }
    const std::shared_ptr<const FunctionBase>& function() const { return mFunction; }

private:
    vtkNew<VtkArray> mArray;
    vtkNew<vtkImageData> mImage;
    std::shared_ptr<const FunctionBase> mFunction;
};

void runOperator(const Operation& operation, const std::shared_ptr<const FunctionBase>& field)
{
    AlgorithmRun run(RegistrationService<AlgorithmFactory>::getInstance(),
                     "Field/Tensor Field Operator");
    run.connect("Field A", field);
    run.setText("Operator", operation.option);
    run.setText("Scalar C", "0.5");
    run.setText("Scalar D", "1.5");
    const volatile bool abortFlag = false;
    run.execute(abortFlag);
    benchmark::DoNotOptimize(run.result("Field"));
}

void runCalculator(const Operation& operation, vtkImageData* image)
{
    vtkNew<vtkArrayCalculator> calculator;
    calculator->SetInputData(image);
    calculator->AddVectorArrayName("v");
    calculator->SetFunction(operation.formula);
    calculator->SetResultArrayName("result");
    calculator->Update();
}

/// Reads what the operation reads and writes what it writes, with one addition per component.
template<typename Stored>
void stream(const Stored* input, double* output, std::size_t resultComponents)
{
    if (resultComponents == 1)
    {
#pragma omp parallel for schedule(static)
        for (std::size_t i = 0; i < numValues; ++i)
            output[i] = static_cast<double>(input[3 * i]) + static_cast<double>(input[3 * i + 1]) +
                        static_cast<double>(input[3 * i + 2]);
    }
    else
    {
#pragma omp parallel for schedule(static)
        for (std::size_t i = 0; i < 3 * numValues; ++i)
            output[i] = static_cast<double>(input[i]) + 1.0;
    }
    benchmark::ClobberMemory();
}

template<typename Stored, typename VtkArray>
void addRows(const char* precision)
{
    const auto input = std::make_shared<Input<Stored, VtkArray>>();
    const auto output = std::make_shared<LargeVector<double>>(3 * numValues);
    stream(input->data(), output->data(), 3);
    for (const Operation& operation : operations)
        for (const int threads : {1, 2})
        {
            const auto row = fmt::format("{} of 16M 3-vectors, {}, {} thread{}", operation.name,
                                         precision, threads, threads == 1 ? "" : "s");
            addContender(row, "tavrin",
                         [=]
                         {
                             omp_set_num_threads(threads);
                             runOperator(operation, input->function());
                         });
            addContender(row, "bandwidth",
                         [=]
                         {
                             omp_set_num_threads(threads);
                             stream(input->data(), output->data(), operation.resultComponents);
                         });
            addContender(row, "vtkArrayCalculator",
                         [=]
                         {
                             setVtkThreads(threads);
                             runCalculator(operation, input->image());
                         });
        }
}

}

void addOperatorRows()
{
    addRows<double, vtkDoubleArray>("float64");
    addRows<float, vtkFloatArray>("float32");
}

}
