"""Holds the JSON Schema against a validator, against what `veska export` writes and against what
`veska build` accepts.

usage: schema_test.py VESKA SCHEMA SAMPLES
"""

import copy
import json
import pathlib
import subprocess
import sys
import tempfile

import jsonschema

VESKA, SCHEMA, SAMPLES = sys.argv[1:]
NO_CELL = {"cell": 0xFFFF, "position": "00" * 6}


def export(sample):
    run = subprocess.run([VESKA, "export", sample], check=True, capture_output=True)
    return json.loads(run.stdout)


def builds(document):
    with tempfile.TemporaryDirectory() as folder:
        run = subprocess.run(
            [VESKA, "build", "-", "-o", pathlib.Path(folder) / "out.ifo"],
            input=json.dumps(document).encode(),
            capture_output=True,
        )
    if run.returncode not in (0, 1):
        sys.exit(f"veska build: exit status {run.returncode}: {run.stderr.decode()}")
    return run.returncode == 0, run.stderr.decode()


def shortened(value, key=""):
    """The same with few items in every list, and points into cells that are gone taken out."""
    if isinstance(value, list):
        few = {"cells": 7, "entries": 4}.get(key, 2)
        return [shortened(item) for item in value[:few]]
    if not isinstance(value, dict):
        return value
    if "cell" in value and value["cell"] > 7:
        return dict(NO_CELL)
    return {name: shortened(item, name) for name, item in value.items()}


def places(value, path=(), pattern=()):
    """One path for each kind of place in the document."""
    yield pattern, path
    if isinstance(value, dict):
        shape = tuple(sorted(value))  # tells the kinds of items of one list apart
        for name, item in value.items():
            yield from places(item, path + (name,), pattern + (shape, name))
    elif isinstance(value, list):
        for i, item in enumerate(value):
            yield from places(item, path + (i,), pattern + ("*",))


def broken(document, path):
    """The document with each mistake that can be made at a path."""
    target = copy.deepcopy(document)
    parent = target
    for step in path[:-1]:
        parent = parent[step]
    value = parent[path[-1]]
    for wrong in (None, {} if isinstance(value, list) else []):
        parent[path[-1]] = wrong
        yield f"{path} is {wrong!r}", target
    parent[path[-1]] = value
    if isinstance(value, dict):
        value["unknown"] = 1
        yield f"{path} holds an unknown key", target
        del value["unknown"]
    if isinstance(value, int):
        for wrong in (-1, 2**64):
            parent[path[-1]] = wrong
            yield f"{path} is {wrong}", target
        parent[path[-1]] = value
    if isinstance(parent, dict):
        del parent[path[-1]]
        yield f"{path} is missing", target


def main():
    schema = json.loads(pathlib.Path(SCHEMA).read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)
    samples = sorted(pathlib.Path(SAMPLES).glob("*.ifo"))
    assert samples
    for sample in samples:
        validator.validate(export(sample))

    document = shortened(export(pathlib.Path(SAMPLES) / "mixed_full.ifo"))
    valid, message = builds(document)
    assert valid, message
    # Beside reading, and what a flag in the record says, which a schema does not look into.
    free = {"$schema", "text"}
    flagged = {"seamless_block", "audio_gap_block", "block"}
    tried = 0
    for pattern, path in {pattern: path for pattern, path in places(document) if path}.items():
        for what, wrong in broken(document, path):
            missing = what.endswith("missing")
            if missing and path[-1] in free:
                continue
            tried += 1
            valid, message = builds(wrong)
            assert not valid, f"veska build takes it when {what}"
            assert "/".join(map(str, path[:-1])) in message, f"{what}: {message}"
            if not (missing and path[-1] in flagged):
                assert not validator.is_valid(wrong), f"the schema takes it when {what}"
    print(f"{len(samples)} exports are valid, {tried} mistakes are found by the schema and by build")


main()
