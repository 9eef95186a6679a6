#include <tavrin/plugin/RegistrationService.hpp>

#include <tavrin/algorithm/AlgorithmFactory.hpp>

namespace tavrin
{

template<typename Factory>
RegistrationService<Factory>& RegistrationService<Factory>::getInstance()
{
    static RegistrationService service(Factory::registrationLabel);
    return service;
}

template<typename Factory>
void RegistrationService<Factory>::registerFactory(const std::shared_ptr<Factory>& factory)
{
    if (!mFactories.try_emplace(factory->getName(), factory).second)
        throw runtime_error(mLabel + " \"" + factory->getName() + "\" already registered.");
}

template<typename Factory>
std::shared_ptr<Factory> RegistrationService<Factory>::find(const std::string& name) const
{
    const auto entry = mFactories.find(name);
    return entry == mFactories.end() ? nullptr : entry->second;
}

template class RegistrationService<AlgorithmFactory>;

}
