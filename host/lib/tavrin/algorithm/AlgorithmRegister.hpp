#pragma once

#include <tavrin/algorithm/AlgorithmFactory.hpp>

#include <iostream>

namespace tavrin
{

/// Makes an algorithm known to the host. A plug-in has one static object of this class for
/// each algorithm, constructed when the plug-in is loaded. A registration that fails is reported on
/// standard error and does not affect the others.
///
///     const AlgorithmRegister<CurlAlgorithm> registration("Field/Curl", "The curl of a field.");
template<typename Algo>
class AlgorithmRegister
{
public:
    AlgorithmRegister(const std::string& name, const std::string& description)
    {
        try
        {
            mFactory = makeFactory(name, description);
            RegistrationService<AlgorithmFactory>::getInstance().registerFactory(mFactory);
        }
        catch (const std::exception& exception)
        {
            std::cerr << "error: registration of algorithm " << name << " failed.\n"
                      << exception.what() << std::endl;
        }
        catch (...)
        {
            std::cerr << "error: registration of algorithm " << name << " failed." << std::endl;
        }
    }

private:
    static std::shared_ptr<AlgorithmFactory> makeFactory(const std::string& name,
                                                         const std::string& description)
    {
        constexpr bool isVisualization = std::is_base_of_v<VisAlgorithm, Algo>;
        return std::make_shared<AlgorithmFactory>(
            name, description,
            isVisualization ? AlgorithmFactory::Visualization : AlgorithmFactory::Data,
            isVisualization,
            [](Options::Control& control)
            { return std::make_unique<typename Algo::Options>(control); },
            [](DataOutputs::Control& control) { typename Algo::DataOutputs declaration(control); },
            [](VisOutputs::Control& control) { typename Algo::VisOutputs declaration(control); },
            [](Algorithm::InitData& initData) { return std::make_unique<Algo>(initData); },
            [](Algorithm::InitData&)
            { return std::unique_ptr<InteractionAlgorithm::Interactions>(); });
    }

    std::shared_ptr<AlgorithmFactory> mFactory;
};

}
