"""Holds the JSON Schema against a validator: what `veska export` writes is valid, and of what
`veska build` refuses, nothing is.

usage: schema_test.py VESKA SCHEMA SAMPLES
"""

import json
import pathlib
import subprocess
import sys

import jsonschema

VESKA, SCHEMA, SAMPLES = sys.argv[1:]
# A flag in the record says whether there is one, which a schema does not look into.
FLAGGED = {"seamless_block", "audio_gap_block", "block"}


def run(*arguments, text=None):
    return subprocess.run([VESKA, *arguments], input=text, capture_output=True, text=True)


def places(value, kind=()):
    """Each place in a document: its kind, what holds it, and its key there."""
    is_object = isinstance(value, dict)
    for key in list(value if is_object else range(len(value))):
        # The keys beside it tell the kinds of items of one list apart.
        here = kind + ((*value, key) if is_object else ("*",))
        yield here, value, key
        if isinstance(value[key], (dict, list)):
            yield from places(value[key], here)


def mistakes(holder, key):
    """Makes each mistake that can be made at a place, and undoes it."""
    right = holder[key]
    numbers = (-1, 2**64) if isinstance(right, int) else ()
    for wrong in (None, {} if isinstance(right, list) else [], *numbers):
        holder[key] = wrong
        yield f"is {wrong}"
    holder[key] = right
    if isinstance(right, dict):
        right["unknown"] = 1
        yield "has an unknown key"
        del right["unknown"]
    if isinstance(holder, dict) and key not in ("$schema", "text", "hex"):
        del holder[key]
        yield "is missing"
        holder[key] = right


schema = json.loads(pathlib.Path(SCHEMA).read_text())
jsonschema.Draft202012Validator.check_schema(schema)
validator = jsonschema.Draft202012Validator(schema)
documents = {}
for sample in sorted(pathlib.Path(SAMPLES).glob("*.ifo")):
    documents[sample.stem] = json.loads(run("export", sample).stdout)
    validator.validate(documents[sample.stem])

document = documents["odd_layout"]
tried = 0
for holder, key in {kind: (holder, key) for kind, holder, key in places(document)}.values():
    for mistake in mistakes(holder, key):
        tried += 1
        built = run("build", "-", "-o", "/dev/null", text=json.dumps(document))
        assert built.returncode == 1, f"veska build when {key} {mistake}: {built.stderr}"
        if not (mistake == "is missing" and key in FLAGGED):
            assert not validator.is_valid(document), f"the schema takes it when {key} {mistake}"
assert run("build", "-", "-o", "/dev/null", text=json.dumps(document)).returncode == 0
print(f"{len(documents)} exports are valid, {tried} mistakes are found by the schema and by build")
