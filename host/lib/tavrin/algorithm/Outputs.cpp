#include <tavrin/algorithm/Outputs.hpp>

#include <algorithm>

namespace tavrin
{

namespace
{

/// The entry with that name, or null.
template<typename Entries>
auto* findByName(Entries& entries, const std::string& name)
{
    const auto found = std::ranges::find_if(entries, [&](const auto& e) { return e.name == name; });
    return found == entries.end() ? nullptr : &*found;
}

[[noreturn]] void complain(const std::string& name, const char* fault)
{
    throw logic_error("implementation error: output \"" + name + "\" " + fault);
}

bool fits(const DataObject& object, const DataOutputs::Control::Port& port)
{
    const auto* const bundle = dynamic_cast<const DataObjectBundle*>(&object);
    if (bundle == nullptr || !port.acceptsBundle)
        return port.types.accepts(object);
    return std::ranges::all_of(bundle->members(),
                               [&](const auto& member) { return port.types.accepts(*member); });
}

}

void DataOutputs::Control::createOutputPort(const std::string& name, RTTICollection types,
                                            bool acceptsBundle)
{
    if (findByName(mPorts, name) != nullptr)
        complain(name, "is declared twice");
    mPorts.push_back({name, std::move(types), acceptsBundle, nullptr});
}

void DataOutputs::Control::setResult(const std::string& name,
                                     std::shared_ptr<const DataObject> object)
{
    Port* const port = findByName(mPorts, name);
    if (port == nullptr)
        complain(name, "is not declared");
    if (object != nullptr && !fits(*object, *port))
        complain(name, "is given an object of another class than declared");
    port->result = std::move(object);
}

void VisOutputs::addGraphics(const std::string& name)
{
    mControl.addGraphics(name);
}

void VisOutputs::Control::addGraphics(const std::string& name)
{
    if (findByName(mOutputs, name) != nullptr)
        complain(name, "is declared twice");
    mOutputs.push_back({name, nullptr});
}

void VisOutputs::Control::setGraphics(const std::string& name,
                                      std::shared_ptr<graphics::Drawable> drawable)
{
    Output* const output = findByName(mOutputs, name);
    if (output == nullptr)
        complain(name, "is not declared");
    output->drawable = std::move(drawable);
}

}
