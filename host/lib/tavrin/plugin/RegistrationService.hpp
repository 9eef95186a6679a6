#pragma once

#include <tavrin/base/Exceptions.hpp>

#include <memory>
#include <string>
#include <unordered_map>

namespace tavrin
{

class AlgorithmFactory;

/// The factories of one sort that the host knows, by name.
template<typename Factory>
class TAVRIN_API RegistrationService
{
public:
    using Factories = std::unordered_map<std::string, std::shared_ptr<Factory>>;

    /// `label` says in messages what is registered.
    explicit RegistrationService(std::string label) : mLabel(std::move(label)) {}

    /// The service of the process.
    static RegistrationService& getInstance();

    /// Throws `runtime_error` where the factory's name is taken; the first one stays.
    void registerFactory(const std::shared_ptr<Factory>& factory);

    /// The factory of that name, or null.
    std::shared_ptr<Factory> find(const std::string& name) const;

    const Factories& factories() const { return mFactories; }

private:
    std::string mLabel;
    Factories mFactories;
};

extern template class RegistrationService<AlgorithmFactory>;

}
