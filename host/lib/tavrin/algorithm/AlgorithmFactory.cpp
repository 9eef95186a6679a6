#include <tavrin/algorithm/AlgorithmFactory.hpp>

#include <algorithm>
#include <cctype>

namespace tavrin
{

AlgorithmFactory::AlgorithmFactory(std::string name, std::string description, AlgorithmType type,
                                   bool isShown, OptionsMaker makeOptions,
                                   DataOutputsDeclarer declareDataOutputs,
                                   VisOutputsDeclarer declareVisOutputs,
                                   AlgorithmMaker makeAlgorithm, InteractionsMaker makeInteractions)
    : mName(std::move(name)), mDescription(std::move(description)), mType(type), mIsShown(isShown),
      mMakeOptions(std::move(makeOptions)), mDeclareDataOutputs(std::move(declareDataOutputs)),
      mDeclareVisOutputs(std::move(declareVisOutputs)), mMakeAlgorithm(std::move(makeAlgorithm)),
      mMakeInteractions(std::move(makeInteractions))
{
    const auto isControl = [](char character)
    { return std::iscntrl(static_cast<unsigned char>(character)) != 0; };
    if (mName.empty() || std::ranges::any_of(mName, isControl))
        throw logic_error("the name of an algorithm must be one line of printable characters");
}

std::unique_ptr<Options> AlgorithmFactory::makeOptions(Options::Control& control) const
{
    return mMakeOptions(control);
}

void AlgorithmFactory::declareDataOutputs(DataOutputs::Control& control) const
{
    mDeclareDataOutputs(control);
}

void AlgorithmFactory::declareVisOutputs(VisOutputs::Control& control) const
{
    mDeclareVisOutputs(control);
}

std::unique_ptr<Algorithm> AlgorithmFactory::makeAlgorithm(Algorithm::InitData& initData) const
{
    return mMakeAlgorithm(initData);
}

std::unique_ptr<InteractionAlgorithm::Interactions> AlgorithmFactory::makeInteractions(
    Algorithm::InitData& initData) const
{
    return mMakeInteractions(initData);
}

template<typename Factory>
RegistrationService<Factory>& RegistrationService<Factory>::getInstance()
{
    static RegistrationService service(Factory::registrationLabel);
    return service;
}

template class RegistrationService<AlgorithmFactory>;

}
