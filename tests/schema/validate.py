"""validate.py SCHEMA FILE...: checks YAML or JSON files against a JSON schema. Exit code 77: a module is missing."""

import json
import sys

try:
    import jsonschema
    import yaml
except ImportError as error:
    print(f"skipped: {error}")
    sys.exit(77)



def load(name):
    # YAML takes some numbers of JSON, such as 6e-08, for text.
    with open(name, encoding="utf-8") as stream:
        return json.load(stream) if name.endswith(".json") else yaml.safe_load(stream)


schema = load(sys.argv[1])
jsonschema.Draft202012Validator.check_schema(schema)
validator = jsonschema.Draft202012Validator(schema)
failed = False
for name in sys.argv[2:]:
    for error in validator.iter_errors(load(name)):
        print(f"{name}: {error.json_path}: {error.message[:500]}")
        failed = True
sys.exit(failed)
