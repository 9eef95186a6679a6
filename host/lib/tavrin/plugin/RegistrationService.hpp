#pragma once

#include <tavrin/base/Exceptions.hpp>

#include <memory>
#include <string>
#include <unordered_map>

namespace tavrin
{

/// The factories of one kind that the host knows, by name. `Factory` offers `getName()` and
/// `registrationLabel`, which says in messages what is registered.
template<typename Factory>
class TAVRIN_API RegistrationService
{
public:
    using Factories = std::unordered_map<std::string, std::shared_ptr<Factory>>;

    explicit RegistrationService(std::string label) : mLabel(std::move(label)) {}

    /// The service of the process. Defined where the service is instantiated, so that all libraries
    /// share one.
    static RegistrationService& getInstance();

    /// Throws `runtime_error` where the factory's name is taken; the first one stays.
    void registerFactory(const std::shared_ptr<Factory>& factory)
    {
        if (!mFactories.try_emplace(factory->getName(), factory).second)
            throw runtime_error(mLabel + " \"" + factory->getName() + "\" already registered.");
    }

    /// The factory of that name, or null.
    std::shared_ptr<Factory> find(const std::string& name) const
    {
        const auto entry = mFactories.find(name);
        return entry == mFactories.end() ? nullptr : entry->second;
    }

    const Factories& factories() const { return mFactories; }

private:
    std::string mLabel;
    Factories mFactories;
};

}
