#pragma once

#include <tavrin/algorithm/Algorithm.hpp>
#include <tavrin/plugin/RegistrationService.hpp>

namespace tavrin
{

/// Everything that the host knows about an algorithm, and how it makes one.
class TAVRIN_API AlgorithmFactory
{
public:
    /// The name of these factories in messages of the registration service.
    static constexpr const char* registrationLabel = "algorithm";

    enum AlgorithmType
    {
        Data = 0,
        Visualization = 1
    };

    using OptionsMaker = std::function<std::unique_ptr<Options>(Options::Control&)>;
    using DataOutputsDeclarer = std::function<void(DataOutputs::Control&)>;
    using VisOutputsDeclarer = std::function<void(VisOutputs::Control&)>;
    using AlgorithmMaker = std::function<std::unique_ptr<Algorithm>(Algorithm::InitData&)>;
    using InteractionsMaker =
        std::function<std::unique_ptr<InteractionAlgorithm::Interactions>(Algorithm::InitData&)>;

    /// `isShown` is true for algorithms whose result is looked at instead of being processed further. Throws
    /// `logic_error` for a name that is not one line of printable characters.
    AlgorithmFactory(std::string name, std::string description, AlgorithmType type, bool isShown,
                     OptionsMaker makeOptions, DataOutputsDeclarer declareDataOutputs,
                     VisOutputsDeclarer declareVisOutputs, AlgorithmMaker makeAlgorithm,
                     InteractionsMaker makeInteractions);

    const std::string& getName() const { return mName; }
    const std::string& getDescription() const { return mDescription; }
    AlgorithmType getType() const { return mType; }
    bool isShown() const { return mIsShown; }

    std::unique_ptr<Options> makeOptions(Options::Control& control) const;
    void declareDataOutputs(DataOutputs::Control& control) const;
    void declareVisOutputs(VisOutputs::Control& control) const;
    std::unique_ptr<Algorithm> makeAlgorithm(Algorithm::InitData& initData) const;
    /// Null for an algorithm without interactions.
    std::unique_ptr<InteractionAlgorithm::Interactions> makeInteractions(
        Algorithm::InitData& initData) const;

private:
    std::string mName;
    std::string mDescription;
    AlgorithmType mType;
    bool mIsShown;
    OptionsMaker mMakeOptions;
    DataOutputsDeclarer mDeclareDataOutputs;
    VisOutputsDeclarer mDeclareVisOutputs;
    AlgorithmMaker mMakeAlgorithm;
    InteractionsMaker mMakeInteractions;
};

extern template class RegistrationService<AlgorithmFactory>;

}
