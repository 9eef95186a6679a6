#include <tavrin/algorithm/Options.hpp>

#include <algorithm>

namespace tavrin
{

Options::missing_option_error::missing_option_error(const std::string& optionName)
    : runtime_error("Missing input for mandatory option \"" + optionName + "\"")
{
}

Options::~Options()
{
    for (const Control::Item& item : mControl.items())
        if (const auto* const input = std::get_if<std::shared_ptr<InputBase>>(&item))
            (*input)->setChangeListener(nullptr);
}

void Options::optionChanged(const std::string&) {}

void Options::declare(std::shared_ptr<InputBase> input, Required required)
{
    input->setChangeListener(this);
    mControl.addInput(std::move(input), required == Required::Yes);
}

void Options::inputChanged(const std::string& name)
{
    const auto visibleInputs = mControl.visibleInputs();
    try
    {
        optionChanged(name);
    }
    catch (const missing_option_error&)
    {
        // The handler asked for data that is not connected yet, which is no reason to refuse.
    }
    catch (...)
    {
        mControl.showOnly(visibleInputs);
        throw;
    }
}

void Options::addGroup(const std::string& name)
{
    mControl.addGroup(name);
}

void Options::addSeparator()
{
    mControl.addSeparator();
}

void Options::setVisible(const std::string& name, bool visible)
{
    const auto input = mControl.getInput(name);
    if (input == nullptr)
        throw logic_error("implementation error: there is no option \"" + name + "\" to show");
    input->setVisible(visible);
}

void Options::Control::addInput(std::shared_ptr<InputBase> input, bool required)
{
    if (!mInputs.try_emplace(input->name(), Entry{input, required}).second)
        throw logic_error("implementation error: option \"" + input->name() +
                          "\" is declared twice");
    mItems.emplace_back(std::move(input));
}

std::shared_ptr<InputBase> Options::Control::getInput(const std::string& name) const
{
    const auto entry = mInputs.find(name);
    return entry == mInputs.end() ? nullptr : entry->second.input;
}

std::vector<std::string> Options::Control::visibleInputs() const
{
    std::vector<std::string> names;
    for (const auto& [name, entry] : mInputs)
        if (entry.input->isVisible())
            names.push_back(name);
    return names;
}

void Options::Control::showOnly(const std::vector<std::string>& names)
{
    for (const auto& [name, entry] : mInputs)
        entry.input->setVisible(std::ranges::find(names, name) != names.end());
}

bool Options::Control::isRequired(const std::string& name) const
{
    const auto entry = mInputs.find(name);
    return entry != mInputs.end() && entry->second.required;
}

}
