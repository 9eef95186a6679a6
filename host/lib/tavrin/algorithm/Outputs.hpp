#pragma once

#include <tavrin/base/DataObject.hpp>
#include <tavrin/base/Exceptions.hpp>

#include <string>
#include <vector>

namespace tavrin
{

namespace graphics
{
class Drawable;
}

/// The output ports of a data algorithm. A derived class declares them in its constructor.
class TAVRIN_API DataOutputs
{
public:
    class Control;

    explicit DataOutputs(Control& control) : mControl(control) {}
    DataOutputs(const DataOutputs&) = delete;
    DataOutputs& operator=(const DataOutputs&) = delete;
    virtual ~DataOutputs() = default;

protected:
    /// A port that carries one object of any of the classes.
    template<typename... Classes>
    void add(const std::string& name);

private:
    Control& mControl;
};

/// Holds the ports that a `DataOutputs` constructor declares, and what is published on them.
class TAVRIN_API DataOutputs::Control
{
public:
    struct Port
    {
        std::string name;
        RTTICollection types;
        bool acceptsBundle = false;
        std::shared_ptr<const DataObject> result;
    };

    /// A port for objects of the given classes, and for bundles of them where `acceptsBundle`.
    /// Throws `logic_error` for a name that is taken.
    void createOutputPort(const std::string& name, RTTICollection types, bool acceptsBundle);

    /// Publishes an object, or withdraws the present one with null. Throws `logic_error` for an unknown port or an
    /// object of another class.
    void setResult(const std::string& name, std::shared_ptr<const DataObject> object);

    /// All of them, in the order of their declaration.
    const std::vector<Port>& ports() const { return mPorts; }

private:
    std::vector<Port> mPorts;
};

template<typename... Classes>
void DataOutputs::add(const std::string& name)
{
    mControl.createOutputPort(name, RTTICollection::of<Classes...>(), false);
}

/// The graphics outputs of a visualization algorithm. A derived class declares them in its
/// constructor.
class TAVRIN_API VisOutputs
{
public:
    class Control;

    explicit VisOutputs(Control& control) : mControl(control) {}
    VisOutputs(const VisOutputs&) = delete;
    VisOutputs& operator=(const VisOutputs&) = delete;
    virtual ~VisOutputs() = default;

protected:
    void addGraphics(const std::string& name);

private:
    Control& mControl;
};

/// Holds the outputs that a `VisOutputs` constructor declares, and what is shown on them.
class TAVRIN_API VisOutputs::Control
{
public:
    struct Output
    {
        std::string name;
        std::shared_ptr<graphics::Drawable> drawable;
    };

    /// Throws `logic_error` for a name that is taken.
    void addGraphics(const std::string& name);

    /// Shows a drawable, or clears the output with null. Throws `logic_error` for an unknown name.
    void setGraphics(const std::string& name, std::shared_ptr<graphics::Drawable> drawable);

    /// All of them, in the order of their declaration.
    const std::vector<Output>& outputs() const { return mOutputs; }

private:
    std::vector<Output> mOutputs;
};

}
