#include <tavrin/io/write/VtkFileWriter.hpp>

#include <vtkCallbackCommand.h>
#include <vtkErrorCode.h>
#include <vtkExecutive.h>
#include <vtkNew.h>
#include <vtkSmartPointer.h>
#include <vtkXMLImageDataWriter.h>
#include <vtkXMLPolyDataWriter.h>
#include <vtkXMLRectilinearGridWriter.h>
#include <vtkXMLStructuredGridWriter.h>
#include <vtkXMLUnstructuredGridWriter.h>

namespace tavrin::io
{

namespace
{

/// A VTK writer that writes to a given stream instead of one that it opens.
template<typename Writer>
class StreamWriter : public Writer
{
public:
    static vtkSmartPointer<StreamWriter> New(std::ostream& stream)
    {
        auto writer = vtkSmartPointer<StreamWriter>::Take(new StreamWriter(stream));
        writer->InitializeObjectBase();
        // Makes VTK open a stream in memory, which `StartFile` replaces.
        writer->WriteToOutputStringOn();
        return writer;
    }

protected:
    explicit StreamWriter(std::ostream& stream) : mStream(stream) {}

    int StartFile() override
    {
        mStream.imbue(std::locale::classic());
        this->Stream = &mStream;
        return Writer::StartFile();
    }

private:
    std::ostream& mStream;
};

vtkSmartPointer<vtkXMLWriter> makeWriter(const vtkDataSet& dataSet, std::ostream& stream)
{
    switch (const_cast<vtkDataSet&>(dataSet).GetDataObjectType())
    {
    case VTK_IMAGE_DATA:
        return StreamWriter<vtkXMLImageDataWriter>::New(stream);
    case VTK_RECTILINEAR_GRID:
        return StreamWriter<vtkXMLRectilinearGridWriter>::New(stream);
    case VTK_STRUCTURED_GRID:
        return StreamWriter<vtkXMLStructuredGridWriter>::New(stream);
    case VTK_POLY_DATA:
        return StreamWriter<vtkXMLPolyDataWriter>::New(stream);
    default:
        return StreamWriter<vtkXMLUnstructuredGridWriter>::New(stream);
    }
}

}

bool writeVtkFile(vtkDataSet& dataSet, std::ostream& stream)
{
    const auto writer = makeWriter(dataSet, stream);
    // VTK does not print errors that are observed.
    vtkNew<vtkCallbackCommand> silence;
    silence->SetCallback([](vtkObject*, unsigned long, void*, void*) {});
    writer->AddObserver(vtkCommand::ErrorEvent, silence);
    writer->GetExecutive()->AddObserver(vtkCommand::ErrorEvent, silence);
    writer->SetInputData(&dataSet);
    writer->SetDataModeToAppended();
    writer->EncodeAppendedDataOff();
    writer->SetCompressorTypeToNone();
    writer->SetHeaderTypeToUInt64();
    return writer->Write() == 1 && writer->GetErrorCode() == vtkErrorCode::NoError;
}

}
