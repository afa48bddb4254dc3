#!/usr/bin/env python3
"""Checks the JSON Schemas against the shipped documents, and that they refuse single slips."""

import copy
import json
import pathlib
import re
import sys

import jsonschema

ROOT = pathlib.Path(__file__).resolve().parents[2]
CONFIG = "persistency_config"
MANIFEST = "deployment_manifest"

DATABASE = "DeploymentConfig/KeyValukDatabase/"
FILE = "DeploymentConfig/FileProxy/"
PAIR = DATABASE + "keyValuePairs/0/"

# Where a document is changed, and what is put there; None takes a member away.
SLIPS = {
    CONFIG: [
        *[("DataConfig", None), ("DataConfig", []), ("other", 0)],
        *[("DataConfig/isRedundancy", "true"), ("DataConfig/updatetime", 0)],
        *[("DataConfig/updateTime", value) for value in (None, -1, 2147483648, 0.5, "0")],
        *[("DataConfig/maxSize", value) for value in (None, -1, 4294967296, 0.5, "0")],
    ],
    MANIFEST: [
        *[("DeploymentConfig", value) for value in (None, [], {"UpdateType": "update"})],
        *[("DeploymentConfig/UpdateType", value) for value in (None, "Update")],
        *[(place + "other", 0) for place in ("", "DeploymentConfig/", DATABASE, FILE, PAIR)],
        ("DeploymentConfig/KeyValueDatabase", {}),
        *[(DATABASE + "updateStrategy", value) for value in (None, "overwrite")],
        *[(DATABASE + "uri", value) for value in (None, "", "my settings.json", "a;b")],
        *[(DATABASE + "keyValuePairs", value) for value in (None, {})],
        *[(FILE + "updateStrategy", value) for value in (None, "keep")],
        *[(FILE + "uri", value) for value in (None, "", 5)],
        *[(FILE + "contentUri", value) for value in (None, "")],
        *[(PAIR + "updateStrategy", value) for value in (None, "")],
        *[(PAIR + "name", value) for value in (None, "", 5, 'a"b')],
        *[(PAIR + "initValue", value) for value in (None, 5)],
        *[(PAIR + "valueDataType", value) for value in (None, 5, "binary")],
    ],
}

# Values that a type may have, and that it may not.
RIGHT = {"string": ["", "two words"], "vector<string>": ["a, b"], "uint8": [","], "sint16": ["-5"]}
RIGHT |= {"vector<sint8>": ["a,-,."], "uint64": ["5"], "float": ["-1.5e-3"]}
WRONG = {
    "string": ["C:\\temp", "a\nb"], "vector<string>": ["", "a,,b"], "vector<bool>": ["1,2"],
    "bool": ["true", "2"], "sint8": ["7"], "uint8": ["", "ab"], "vector<uint8>": ["1,2"],
    "sint32": ["4x", " 4", ""], "vector<sint32>": ["1,x"], "uint16": ["-1"], "uint32": ["1,2"],
    "vector<uint32>": ["", "1,,2", "1, 2", "1,"], "double": ["inf"], "float": ["1,5"],
    "vector<double>": ["1.5,x"], "vector<uint16": ["1"], "vector<int>": ["1"], "Sint8": ["a"],
}


def shipped_documents():
    """Pairs of a schema's name and a document."""
    yield CONFIG, json.loads((ROOT / "examples/quickstart/PersistencyConfig.json").read_text())
    for path in sorted((ROOT / "examples/manifests").glob("*.json")):
        yield MANIFEST, json.loads(path.read_text())
    page = (ROOT / "docs/manifests.md").read_text()
    for text in re.findall(r"```json\n(.*?)```", page, re.DOTALL):
        document = json.loads(text)
        yield (CONFIG if "DataConfig" in document else MANIFEST), document


def changed(document, place, value):
    document = copy.deepcopy(document)
    *parents, last = place.split("/")
    target = document
    for name in parents:
        target = target[int(name) if isinstance(target, list) else name]
    if value is None:
        del target[last]
    else:
        target[last] = value
    return document


def with_value(document, kind, text):
    return changed(changed(document, PAIR + "valueDataType", kind), PAIR + "initValue", text)


def main():
    documents = {}
    cases = []  # schema, document, whether it is right, what it is
    for number, (name, document) in enumerate(shipped_documents()):
        documents.setdefault(name, document)
        cases.append((name, document, True, f"shipped document {number}"))
    for name, slips in SLIPS.items():
        cases += [(name, changed(documents[name], *slip), False, slip) for slip in slips]
    for is_right, table in ((True, RIGHT), (False, WRONG)):
        for kind, text in ((kind, text) for kind, texts in table.items() for text in texts):
            document = with_value(documents[MANIFEST], kind, text)
            cases.append((MANIFEST, document, is_right, (kind, text)))

    wrong = 0
    for name in documents:
        schema = json.loads((ROOT / f"schemas/{name}.schema.json").read_text())
        jsonschema.Draft202012Validator.check_schema(schema)
        validator = jsonschema.Draft202012Validator(schema)
        for case_name, document, is_right, what in cases:
            if case_name == name and validator.is_valid(document) != is_right:
                wrong += 1
                print(f"{name}: {'refuses' if is_right else 'takes'} {what}")
    print(f"schemas: {len(cases)} documents judged, {wrong} wrongly")
    return 1 if wrong or len(documents) != 2 else 0


if __name__ == "__main__":
    sys.exit(main())
