#!/usr/bin/env python3
"""Holds data/vexa-database.schema.json against the program: json_schema.py VEXA.

What `vexa export` writes is valid, and has every key that the schema describes. Documents that differ in one key or one
value are taken by `vexa import` exactly when they are valid. Prints what differs; the status is 1 then.
"""
import copy
import json
import os
import subprocess
import sys
import tempfile

import jsonschema

vexa = os.path.abspath(sys.argv[1])
root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
with open(os.path.join(root, "data/vexa-database.schema.json"), encoding="utf-8") as file:
    schema = json.load(file)
jsonschema.Draft202012Validator.check_schema(schema)
validator = jsonschema.Draft202012Validator(schema)
folder = tempfile.TemporaryDirectory()
failures = []
# Numbers that must be 1 to n, and numbers of services: their range is not the schema's alone.
COUNTED = {"number", "order", "place"}


def path(name):
    return os.path.join(folder.name, name)


def run(*words):
    return subprocess.run([vexa, *words], capture_output=True, text=True, check=False)


def exported(*options):
    done = run("export", path("a.bin"), "-o", path("a.json"), "--format", "json", *options)
    if done.returncode != 0:
        sys.exit(done.stderr)
    with open(path("a.json"), encoding="utf-8") as written:
        return json.load(written)


def imported(document):
    with open(path("x.json"), "w", encoding="utf-8") as written:
        json.dump(document, written)
    done = run("import", path("x.json"), "-o", path("x.bin"))
    if done.returncode not in (0, 1):
        sys.exit(f"status {done.returncode}: {done.stderr}")
    return done.returncode == 0


def compare(what, document):
    taken, valid = imported(document), validator.is_valid(document)
    if taken != valid:
        failures.append(f"{what}: {'taken' if taken else 'refused'}, but {'valid' if valid else 'not valid'}")


def records(document):
    """One record of each kind, with the name of its description."""
    several = "sdbs" in document
    sdb = document["sdbs"][0] if several else document
    satellite = sdb["satellites"][0]
    carrier = satellite["carriers"][0]
    kinds = [("lnb", sdb["lnbs"][0]), ("satellite", satellite), ("carrier", carrier),
             ("service", carrier["services"][0]), ("favourite", sdb["favourites"][0])]
    if several:
        kinds += [("sdb", sdb), ("ubi", document["ubis"][0]), ("databases", document)]
    else:
        kinds.append(("database", document))
    return kinds


def values_for(key, described):
    """Values at the edges of what a key takes."""
    if described.get("type") == "integer" and key not in COUNTED:
        lowest, highest = described["minimum"], described["maximum"]
        return [lowest, highest, lowest - 1, highest + 1, "1", 0.5, None]
    if "maxLength" in described:
        return ["x" * described["maxLength"], "x" * (described["maxLength"] + 1), "\u00e9", 1]
    if "pattern" in described:
        return ["0" * 32, "0" * 8, "0f" * 4, "0" * 7 + "g", 0]
    if "const" in described:
        return [described["const"], "other", 1]
    if described.get("type") == "array":
        return [{}, None, [1.5]]
    return ["anything", -1, None]


def small(document):
    """The same with one record of a kind, where the rules let that be."""
    for sdb in document.get("sdbs", [document]):
        carrier = sdb["satellites"][0]["carriers"][0]
        del sdb["lnbs"][1:], sdb["satellites"][1:], sdb["satellites"][0]["carriers"][1:], carrier["services"][1:]
        carrier["place"] = carrier["services"][0]["number"] = carrier["services"][0]["order"] = 1
        for group in sdb["favourites"]:
            group["tv"], group["radio"] = [1], []
    return document


def main():
    done = run("import", os.path.join(root, "data/sample.sdx"), "-o", path("a.bin"))
    if done.returncode != 0:
        sys.exit(done.stderr)
    several = exported("--sdb", "all")
    several["ubis"].append({key: 0 for key in schema["$defs"]["ubi"]["properties"]} |
                           {"name": "box", "kept_byte8_23": "0" * 32, "lock_code": "30" * 4})
    if not imported(several):
        sys.exit("a user box was refused")
    os.replace(path("x.bin"), path("a.bin"))
    several, one = exported("--sdb", "all"), exported()
    for document in (several, one):
        failures.extend(f"written: {error.json_path} {error.message}" for error in validator.iter_errors(document))
    for base in (small(several), small(one)):
        compare("small", base)
        for place, (kind, record) in enumerate(records(base)):
            properties = schema["$defs"][kind]["properties"]
            if set(properties) != set(record):
                failures.append(f"{kind}: {sorted(set(properties) ^ set(record))} written or described, not both")
            for key in [*properties, "unknown"]:
                changed = copy.deepcopy(base)
                records(changed)[place][1].pop(key, None)
                if key == "unknown":
                    records(changed)[place][1][key] = 1
                compare(f"{kind} {'with' if key == 'unknown' else 'without'} {key}", changed)
            for key, described in properties.items():
                for value in values_for(key, described):
                    changed = copy.deepcopy(base)
                    records(changed)[place][1][key] = value
                    compare(f"{kind} {key} = {value!r}", changed)
    print("\n".join(failures) or "the schema holds")
    return 1 if failures else 0


sys.exit(main())
