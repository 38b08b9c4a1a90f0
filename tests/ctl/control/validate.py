#!/usr/bin/env python3
# validate.py SCHEMA KIND FILE: validates each line of the file against the definition KIND of the schema, and
# prints "yes" or "no" for each.
import json
import sys

import jsonschema

schema_path, kind, path = sys.argv[1:]
with open(schema_path, encoding="utf-8") as file:
    schema = json.load(file)
jsonschema.Draft202012Validator.check_schema(schema)
validator = jsonschema.Draft202012Validator({"$ref": f"#/$defs/{kind}", "$defs": schema["$defs"]})
with open(path, encoding="utf-8") as file:
    for line in file:
        print("yes" if validator.is_valid(json.loads(line)) else "no")
