#include <tavrin/pipeline/ColorMapInput.hpp>

#include <tavrin/colormap/ColorMapReference.hpp>
#include <tavrin/function/NormBounds.hpp>
#include <tavrin/function/visit.hpp>

#include <algorithm>

namespace tavrin::pipeline
{

namespace
{

ValueRange normsOf(const DataObjectBundle::Members& inputs)
{
    for (const auto& object : inputs)
    {
        const auto* const function = dynamic_cast<const FunctionBase*>(object.get());
        if (function == nullptr)
            continue;
        NormBounds bounds;
        visitFunction<ValueTypes>(*function,
                                  [&](const auto& typed) { bounds = boundNorms(*typed.values()); });
        return {bounds.least, bounds.greatest};
    }
    return {};
}

}

bool takesColorMap(const InputBase& input)
{
    const auto* const data = dynamic_cast<const InputDataObject*>(&input);
    return data != nullptr &&
           std::ranges::find(data->types().ids(), ColorMapDataObject::classTypeId()) !=
               data->types().ids().end();
}

std::shared_ptr<const ColorMapDataObject> loadColorMap(const std::string& reference,
                                                       const DataObjectBundle::Members& inputs)
{
    const auto parsed = ColorMapReference::parse(reference);
    return parsed.loadFor(parsed.range ? *parsed.range : normsOf(inputs));
}

}
