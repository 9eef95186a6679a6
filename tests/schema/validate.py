"""validate.py SCHEMA FILE...: checks YAML or JSON files against a JSON schema. Exit code 77: a module is missing."""

import sys

try:
    import jsonschema
    import yaml
except ImportError as error:
    print(f"skipped: {error}")
    sys.exit(77)

with open(sys.argv[1], encoding="utf-8") as stream:
    schema = yaml.safe_load(stream)
jsonschema.Draft202012Validator.check_schema(schema)
validator = jsonschema.Draft202012Validator(schema)
failed = False
for name in sys.argv[2:]:
    with open(name, encoding="utf-8") as stream:
        for error in validator.iter_errors(yaml.safe_load(stream)):
            print(f"{name}: {error.json_path}: {error.message}")
            failed = True
sys.exit(failed)
