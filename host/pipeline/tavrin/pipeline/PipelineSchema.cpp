#include <tavrin/pipeline/PipelineSchema.hpp>

namespace tavrin::pipeline
{

namespace
{

using Option = AlgorithmDescription::Option;

/// A text with a variable can stand for any value.
const Json withVariable{{"type", "string"}, {"pattern", "\\$\\{"}};

Json described(const std::string& description, const Json& schema)
{
    Json result{{"description", description}};
    result.update(schema);
    return result;
}

Json anyOf(Json alternatives)
{
    return {{"anyOf", std::move(alternatives)}};
}

/// The schema of the value of an option, or of each of several for a bundle.
Json valueSchema(const Option& option)
{
    const Json suggested{{"const", "auto"}};
    Json text{{"type", "string"}};
    switch (option.kind)
    {
    case InputKind::Boolean:
        return anyOf({{{"type", "boolean"}}, suggested, withVariable});
    case InputKind::Integer:
        return anyOf({{{"type", "integer"}}, suggested, withVariable});
    case InputKind::Number:
        return anyOf({{{"type", "number"}}, suggested, withVariable});
    case InputKind::Choice:
        return anyOf({{{"enum", option.choices}},
                      {{"type", "object"},
                       {"properties", {{"unchecked", text}}},
                       {"required", {"unchecked"}},
                       {"additionalProperties", false}},
                      withVariable});
    case InputKind::Text:
        return {{"type", {"string", "number"}}};
    case InputKind::Bundle:
        return anyOf({text, {{"type", "array"}, {"items", text}}});
    case InputKind::Color:
    case InputKind::Data:
        return text;
    case InputKind::Label:
        break;
    }
    return false;
}

Json optionsSchema(const AlgorithmCard& algorithm)
{
    Json properties = Json::object();
    Json required = Json::array();
    for (const Option& option : algorithm.options)
    {
        if (option.kind == InputKind::Label)
            continue;
        properties[option.name] = described(option.help, valueSchema(option));
        if (option.isRequired)
            required.push_back(option.name);
    }
    return {{"type", "object"},
            {"properties", std::move(properties)},
            {"required", std::move(required)},
            {"additionalProperties", false}};
}

/// The schema of a step: the algorithm decides on the options.
Json stepSchema(std::span<const AlgorithmCard> algorithms)
{
    Json names = Json::array();
    Json cases = Json::array();
    for (const AlgorithmCard& algorithm : algorithms)
    {
        names.push_back(algorithm.name);
        cases.push_back({{"if", {{"properties", {{"algorithm", {{"const", algorithm.name}}}}}}},
                         {"then",
                          {{"description", algorithm.description},
                           {"properties", {{"options", optionsSchema(algorithm)}}}}}});
    }
    return {{"type", "object"},
            {"properties",
             {{"id",
               {{"description", "names the step in STEP.OUTPUT"},
                {"type", "string"},
                {"pattern", "^[A-Za-z0-9_-]+$"}}},
              {"algorithm", {{"enum", std::move(names)}}},
              {"options", {{"type", "object"}}}}},
            {"required", {"id", "algorithm"}},
            {"additionalProperties", false},
            {"allOf", std::move(cases)}};
}

Json outputSchema()
{
    const Json text{{"type", "string"}};
    const Json textOrNumber{{"type", {"string", "number"}}};
    return anyOf({text,
                  {{"type", "object"},
                   {"properties",
                    {{"file", text},
                     {"size", described("WIDTHxHEIGHT in pixels", text)},
                     {"background", described("a color", text)},
                     {"view", described("x, -x, y, -y, z, -z, iso or AZIMUTH,ELEVATION", text)},
                     {"title", text},
                     {"font-scale", described("factor of the size of texts", textOrNumber)},
                     {"crop", {{"type", {"boolean", "string"}}}},
                     {"arrows", described("at most so many values are shown", textOrNumber)}}},
                   {"required", {"file"}},
                   {"additionalProperties", false}}});
}

}

Json pipelineSchema(std::span<const AlgorithmCard> algorithms)
{
    const Json identifier{{"pattern", "^[A-Za-z0-9_-]+$"}};
    return {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
            {"title", "tavrin pipeline"},
            {"type", "object"},
            {"properties",
             {{"variables",
               {{"description", "defaults by name; a variable without one has to be set"},
                {"type", {"object", "null"}},
                {"propertyNames", identifier},
                {"additionalProperties", {{"type", {"string", "number", "boolean", "null"}}}}}},
              {"data",
               {{"description", "references by name, FILE#ARRAY?key=value"},
                {"type", {"object", "null"}},
                {"propertyNames", identifier},
                {"additionalProperties", {{"type", "string"}}}}},
              {"for",
               {{"description", "each-step, or a variable and the set of its values"},
                {"anyOf",
                 {{{"const", "each-step"}},
                  {{"type", "object"},
                   {"maxProperties", 1},
                   {"additionalProperties", {{"type", {"string", "number"}}}}}}}}},
              {"steps", {{"type", "array"}, {"minItems", 1}, {"items", stepSchema(algorithms)}}},
              {"outputs",
               {{"description", "files by STEP.OUTPUT"},
                {"type", {"object", "null"}},
                {"additionalProperties", outputSchema()}}}}},
            {"required", {"steps"}},
            {"additionalProperties", false}};
}

}
