#!/usr/bin/python3
"""tests/docs/patch_schema.py TOLVANECTL: the schema of patch files accepts what the program accepts, and refuses what it
refuses. Run by ctest."""
import json
import pathlib
import subprocess
import sys
import tempfile

import jsonschema

TOP = pathlib.Path(__file__).resolve().parents[2]
SCHEMA = json.loads((TOP / "docs/patch-file.schema.json").read_text())
jsonschema.Draft202012Validator.check_schema(SCHEMA)
VALIDATOR = jsonschema.Draft202012Validator(SCHEMA)

ROUTE = {"inputChannel": "0", "outputChannel": "1", "gain": "0.5", "active": "true"}


def patch(**members):
    """The text of a patch with one route; a member that is None is left out."""
    fields = {**ROUTE, **members}
    return "[{" + ",".join(f'"{key}":{value}' for key, value in fields.items() if value is not None) + "}]"


GOOD = {
    "no route": "[]",
    "a route": patch(),
    "an unknown member": patch(comment='"left"'),
    "an integer with a fraction of zero": patch(inputChannel="3.0"),
    "an integer with an exponent": patch(outputChannel="1e1"),
    "a channel that no device has": patch(inputChannel="70000"),
    "a silent route from before the first channel": patch(inputChannel="-1", active="false"),
    "the largest channel, silent": patch(inputChannel="9223372036854775807", active="false"),
    "a whole gain": patch(gain="2"),
    "a negative gain": patch(gain="-0.5"),
    "the largest gain": patch(gain="3.4028234663852886e38"),
}
BAD = {
    "an object": '{"inputChannel":0}',
    "a number": "1",
    "a route that is null": "[null]",
    "a route that is an array": "[[0,1,0.5,true]]",
    "a channel as text": patch(inputChannel='"1"'),
    "a channel between two": patch(outputChannel="1.5"),
    "a channel that is true": patch(outputChannel="true"),
    "a channel beyond 64 bits": patch(inputChannel="9223372036854775808", active="false"),
    "a gain as text": patch(gain='"1"'),
    "a gain that is null": patch(gain="null"),
    "a gain beyond a float": patch(gain="1e39"),
    "active as a number": patch(active="1"),
    **{f"no {member}": patch(**{member: None}) for member in ROUTE},
}


def program_accepts(path):
    return subprocess.run([sys.argv[1], "check", path], capture_output=True, check=False).returncode == 0


def verdicts(text):
    with tempfile.NamedTemporaryFile("w", suffix=".json") as file:
        file.write(text)
        file.flush()
        return VALIDATOR.is_valid(json.loads(text)), program_accepts(file.name)


failures = []
for expected, samples in ((True, GOOD), (False, BAD)):
    for name, text in samples.items():
        if verdicts(text) != (expected, expected):
            failures.append(f"{name}: (schema, program) say {verdicts(text)}: {text}")
for example in sorted((TOP / "share").glob("*.json")):
    if verdicts(example.read_text()) != (True, True):
        failures.append(f"{example} is no patch")
print("\n".join(failures) or f"{len(GOOD) + len(BAD)} samples")
sys.exit(bool(failures))
