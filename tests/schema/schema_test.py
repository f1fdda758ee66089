"""Compares the schemas of description files with the loader, and with the files that there are."""
import glob
import json
import os
import re
import subprocess
import sys
import tempfile
import unittest

import jsonschema

SOURCE, COMMAND = sys.argv.pop(1), sys.argv.pop(1)
ALLOWED, WITHOUT_EFFECT, REFUSED = "allowed", "without effect", "refused"

# Changes to an entry that is right: null takes a member away.
CHANGES = [
    ({"minVersion": 3, "priority": -10, "authLevel": 2, "appPriv": "a.b", "own": {}}, ALLOWED),
    ({"methods": {"1": [{"a": {"allowUpload": True, "allowUser": []}}, "b"], "12": []}}, ALLOWED),
    ({"methods": {"1": [{"a": {"allowUsers": []}}]}}, WITHOUT_EFFECT),
    ({"methods": {"1": [{"a": {"allowDemo": "yes"}}]}}, WITHOUT_EFFECT),
    ({"methods": {"1": [{"a": {}, "b": {}}]}}, WITHOUT_EFFECT),
    ({"methods": {"one": ["a"]}}, WITHOUT_EFFECT),
    ({"methods": {"1": "a"}}, WITHOUT_EFFECT),
    ({"allowUser": ["admin"]}, WITHOUT_EFFECT),
    ({"authLevel": 3}, WITHOUT_EFFECT),
    ({"appPriv": ".a"}, WITHOUT_EFFECT),
    ({"lib": None}, REFUSED),
    ({"lib": ""}, REFUSED),
    ({"minVersion": None}, REFUSED),
    ({"maxVersion": "1"}, REFUSED),
    ({"methods": ["a"]}, REFUSED),
    ({"priority": 11}, REFUSED),
    ({"priority": -11}, REFUSED),
    ({"priority": "1"}, REFUSED),
]


def read_json(path):
    """The value of a JSON file with comments."""
    with open(path, encoding="utf-8") as file:
        text = file.read().replace('"description.schema.json#', '"#')
    comment = r'("(?:\\.|[^"\\])*")|//[^\n]*|/\*.*?\*/'
    return json.loads(re.sub(comment, lambda match: match[1] or "", text, flags=re.S))


DESCRIPTION = read_json(f"{SOURCE}/data/description.schema.json")
DEFAULTS = {**read_json(f"{SOURCE}/data/defaults.schema.json"),
            "definitions": DESCRIPTION["definitions"]}


class Schema(unittest.TestCase):
    def test_allows_the_files_that_there_are(self):
        for path in [path for directory in ("data", "examples/webapi", "tools/webapi/scaffold")
                     for path in glob.glob(f"{SOURCE}/{directory}/*.lib*")]:
            with self.subTest(path):
                jsonschema.Draft7Validator(DESCRIPTION).validate(read_json(path))
        jsonschema.Draft7Validator(DEFAULTS).validate(read_json(f"{SOURCE}/data/lib.def"))

    def test_refuses_what_the_loader_refuses(self):
        right = {"lib": "libx.so", "minVersion": 1, "maxVersion": 1, "methods": {"1": ["a"]}}
        entries = {json.dumps(change): {key: value for key, value in {**right, **change}.items()
                                        if value is not None} for change, _ in CHANGES}
        with tempfile.TemporaryDirectory() as root:
            directory = f"{root}/usr/orbo/orboman/webapi"
            os.makedirs(directory)
            with open(f"{directory}/ORBO.lib", "w", encoding="utf-8") as file:
                json.dump(entries, file)
            listed = subprocess.check_output([COMMAND, "list", "--json"],
                                             env={**os.environ, "WEBAPI_ROOT": root})
        taken = {entry["api"] for entry in json.loads(listed)}
        for (name, entry), (_, expected) in zip(entries.items(), CHANGES):
            with self.subTest(name):
                valid = jsonschema.Draft7Validator(DESCRIPTION).is_valid({"API": entry})
                self.assertEqual((expected == ALLOWED, expected != REFUSED), (valid, name in taken))

    def test_knows_the_attributes_that_the_library_reads(self):
        read = set()
        for path in glob.glob(f"{SOURCE}/src/**/*.cpp", recursive=True):
            with open(path, encoding="utf-8") as file:
                read.update(re.findall(r'(?:GetMethodAttr|FindMethodAttribute)\([^;{]*?"(\w+)"',
                                       file.read()))
        self.assertEqual(read, set(DESCRIPTION["definitions"]["attributes"]["properties"]))


if __name__ == "__main__":
    unittest.main()
