#include "OutputSchemas.hpp"

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/base/Suggestion.hpp>

#include <map>

namespace tavrin::app
{

namespace
{

constexpr const char* listSchema = R"({
  "title": "tavrin list --json",
  "type": "object",
  "properties": {
    "formatVersion": {"const": 1},
    "algorithms": {
      "description": "sorted by name",
      "type": "array",
      "items": {
        "type": "object",
        "properties": {"name": {"type": "string"}, "description": {"type": "string"}},
        "required": ["name", "description"],
        "additionalProperties": false
      }
    }
  },
  "required": ["formatVersion", "algorithms"],
  "additionalProperties": false
})";

constexpr const char* describeSchema = R"({
  "title": "tavrin describe --json",
  "type": "object",
  "properties": {
    "formatVersion": {"const": 1},
    "name": {"type": "string"},
    "description": {"type": "string"},
    "options": {
      "description": "in the order of declaration",
      "type": "array",
      "items": {
        "type": "object",
        "properties": {
          "name": {"type": "string"},
          "kind": {"enum": ["boolean", "integer", "number", "text", "color", "choice", "label", "data", "bundle"]},
          "help": {"type": "string"},
          "group": {"type": "string"},
          "afterSeparator": {"type": "boolean"},
          "required": {"type": "boolean"},
          "visible": {"type": "boolean"},
          "default": {"type": "string"},
          "value": {"type": "string"},
          "choices": {"type": "array", "items": {"type": "string"}},
          "types": {"type": "array", "items": {"type": "string"}},
          "references": {
            "type": "array",
            "items": {
              "type": "object",
              "properties": {"kind": {"type": "string"}, "placeholder": {"type": "string"}},
              "required": ["kind", "placeholder"]
            }
          },
          "connected": {"type": "boolean"}
        },
        "required": ["name", "kind", "help", "required", "visible", "default", "value", "choices", "types"]
      }
    },
    "outputs": {
      "type": "array",
      "items": {
        "type": "object",
        "properties": {
          "name": {"type": "string"},
          "kind": {"enum": ["data", "graphics"]},
          "types": {"type": "array", "items": {"type": "string"}}
        },
        "required": ["name", "kind", "types"]
      }
    }
  },
  "required": ["formatVersion", "name", "description", "options", "outputs"],
  "additionalProperties": false
})";

constexpr const char* infoSchema = R"({
  "title": "tavrin info --json",
  "type": "object",
  "properties": {
    "formatVersion": {"const": 1},
    "file": {"type": "string"},
    "format": {"type": "string"},
    "grid": {"type": ["string", "null"]},
    "dimension": {"enum": [1, 2, 3]},
    "points": {"type": "integer"},
    "cells": {"type": "integer"},
    "size": {"type": ["array", "null"], "items": {"type": "integer"}},
    "cellTypes": {"type": "object", "additionalProperties": {"type": "integer"}},
    "bounds": {"type": "array", "items": {"type": "array", "items": {"type": ["number", "null"]}}},
    "timeSteps": {"type": "array", "items": {"type": "number"}},
    "arrays": {
      "type": "array",
      "items": {
        "type": "object",
        "properties": {
          "name": {"type": "string"},
          "on": {"enum": ["points", "cells"]},
          "components": {"type": "integer"},
          "precision": {"type": "string"},
          "valueType": {"type": "string"},
          "reference": {"type": "string"}
        },
        "required": ["name", "on", "components", "precision", "valueType", "reference"]
      }
    },
    "blocks": {"type": "array", "items": {"type": "object"}},
    "statistics": {
      "description": "with --stats: over all time steps",
      "type": "array",
      "items": {
        "type": "object",
        "properties": {
          "name": {"type": "string"},
          "on": {"enum": ["points", "cells"]},
          "steps": {"type": "integer"},
          "values": {"type": "integer"},
          "invalid": {"type": "integer"},
          "components": {"type": "array", "items": {"$ref": "#/$defs/range"}},
          "norm": {"anyOf": [{"$ref": "#/$defs/range"}, {"type": "null"}]}
        },
        "required": ["name", "on", "steps", "values", "invalid", "components", "norm"],
        "additionalProperties": false
      }
    },
    "times": {"description": "with --times: a set expression", "type": "string"}
  },
  "$defs": {
    "range": {
      "description": "of the finite values",
      "type": "object",
      "properties": {
        "name": {"type": "string"},
        "minimum": {"type": ["number", "null"]},
        "maximum": {"type": ["number", "null"]},
        "mean": {"type": ["number", "null"]},
        "finite": {"type": "integer"},
        "notANumber": {"type": "integer"},
        "infinite": {"type": "integer"}
      },
      "required": ["minimum", "maximum", "mean", "finite", "notANumber", "infinite"],
      "additionalProperties": false
    }
  },
  "required": ["formatVersion", "file", "format", "dimension", "points", "cells", "bounds", "timeSteps", "arrays"]
})";

constexpr const char* reportSchema = R"({
  "title": "tavrin run --report, tavrin pipeline --report",
  "anyOf": [{"$ref": "#/$defs/repetition"}, {"type": "array", "items": {"$ref": "#/$defs/repetition"}}],
  "$defs": {
    "repetition": {"anyOf": [{"$ref": "#/$defs/run"}, {"$ref": "#/$defs/pipeline"}]},
    "pipeline": {
      "type": "object",
      "properties": {
        "formatVersion": {"const": 1},
        "time": {"type": "number"},
        "variables": {"type": "object"},
        "steps": {"type": "array", "items": {"$ref": "#/$defs/run"}}
      },
      "required": ["formatVersion", "steps"],
      "additionalProperties": false
    },
    "run": {
      "type": "object",
      "properties": {
        "formatVersion": {"const": 1},
        "id": {"description": "of the step of a pipeline", "type": "string"},
        "time": {"description": "of a repetition for each time step", "type": "number"},
        "variables": {"description": "of a repetition for each value of a set", "type": "object"},
        "algorithm": {"type": "string"},
        "options": {
          "description": "values as texts; references of data options; null without data",
          "type": "object",
          "additionalProperties": {"type": ["string", "array", "null"], "items": {"type": "string"}}
        },
        "seconds": {
          "type": "object",
          "properties": {"read": {"type": "number"}, "execute": {"type": "number"}, "write": {"type": "number"}},
          "required": ["read", "execute", "write"]
        },
        "peakMemoryBytes": {"description": "of the process so far", "type": "integer"},
        "infoLog": {"type": "array", "items": {"type": "string"}},
        "debugLog": {"type": "array", "items": {"type": "string"}},
        "hints": {"type": "array", "items": {"type": "string"}},
        "suggestions": {"type": "object", "additionalProperties": {"type": "string"}},
        "results": {"description": "what the algorithm reports; null is a number that is not finite", "type": "object"},
        "samples": {
          "type": "object",
          "properties": {"total": {"type": "integer"}, "outside": {"type": "integer"}}
        },
        "outputs": {
          "type": "array",
          "items": {
            "type": "object",
            "properties": {
              "port": {"type": "string"},
              "file": {"type": "string"},
              "values": {"type": "integer"},
              "timeSteps": {"type": "integer"},
              "width": {"type": "integer"},
              "height": {"type": "integer"}
            },
            "required": ["port", "file"],
            "additionalProperties": false
          }
        }
      },
      "required": ["formatVersion", "algorithm", "options", "seconds", "peakMemoryBytes", "infoLog", "debugLog",
                   "hints", "suggestions", "results", "outputs"],
      "additionalProperties": false
    }
  }
})";

const std::map<std::string, const char*>& schemas()
{
    static const std::map<std::string, const char*> texts{{"list", listSchema},
                                                          {"describe", describeSchema},
                                                          {"info", infoSchema},
                                                          {"report", reportSchema}};
    return texts;
}

}

std::vector<std::string> outputSchemaNames()
{
    std::vector<std::string> names;
    for (const auto& [name, text] : schemas())
        names.push_back(name);
    return names;
}

pipeline::Json outputSchema(const std::string& name)
{
    const auto found = schemas().find(name);
    if (found == schemas().end())
    {
        std::vector<std::string> names = outputSchemaNames();
        names.emplace_back("pipeline");
        throw usage_error("there is no schema \"" + name + "\"" + suggestionFor(name, names));
    }
    pipeline::Json schema{{"$schema", "https://json-schema.org/draft/2020-12/schema"}};
    schema.update(pipeline::Json::parse(found->second));
    return schema;
}

}
