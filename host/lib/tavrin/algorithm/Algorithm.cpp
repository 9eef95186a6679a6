#include <tavrin/algorithm/Algorithm.hpp>

namespace tavrin
{

Algorithm::Progress::Progress(const Algorithm& algorithm, const std::string& title,
                              unsigned long total, bool canAbort)
    : mReports(algorithm.host().progressReports), mReport{title, total, canAbort, *this}
{
    mReports.open(mReport);
}

Algorithm::Progress::~Progress()
{
    mReports.close(mReport);
}

void DataAlgorithm::announceResult(const std::string& portName, const Domain& domain,
                                   std::size_t numTimeSteps) const
{
    host().listener.announced(portName, domain, numTimeSteps);
}

void DataAlgorithm::setResult(const std::string& portName, std::shared_ptr<const DataObject> object)
{
    host().dataOutputs.setResult(portName, std::move(object));
}

void DataAlgorithm::clearResult(const std::string& portName)
{
    host().dataOutputs.setResult(portName, nullptr);
}

void VisAlgorithm::setGraphics(const std::string& outputName,
                               std::shared_ptr<graphics::Drawable> drawable)
{
    host().visOutputs.setGraphics(outputName, std::move(drawable));
}

}
