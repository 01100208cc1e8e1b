#!/usr/bin/env python3
"""Holds docs/definition-format.md, docs/examples/ and the schemas beside them against the library.

usage: definition_test.py DEFINITION_WRITER     (exits 77 where python3-jsonschema is not installed)
"""
import copy
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest
import zipfile

try:
    import jsonschema
except ImportError:
    print("skipped: python3-jsonschema is not installed; scripts/setup installs it")
    sys.exit(77)

ROOT = pathlib.Path(__file__).resolve().parents[2]
EXAMPLE = ROOT / "docs/examples/definition.json"
SCHEMA = json.loads((ROOT / "docs/definition.schema.json").read_text(encoding="utf-8"))
VALIDATOR = jsonschema.Draft202012Validator(SCHEMA)
WRITER = ""

ABSENT = object()

# Paths into the example; a control is named by its id. Each row: where, what is put there, and what the reader makes
# of it: "refused", the key that it names as missing, or None where it reads on without the value.
BROKEN = [
    (["apiVersion"], ABSENT, "refused"),
    (["apiVersion"], "3.0", "refused"),
    (["apiVersion"], "2.3", "refused"),
    (["authorApp"], 5, None),
    (["capsuleNameLocalized"], "Scoreboard", None),
    (["capsuleNameLocalized", "strDB"], {"en_US": "Scoreboard"}, None),
    (["capsuleNameLocalized", "strDB", 0, "str"], 5, None),
    (["capsuleNameLocalized", "strDB", 0, "localeString"], None, None),
    (["capsuleTags"], "sport", None),
    (["capsuleTags"], ["sport", 7], None),
    (["usedFontsLocalized"], ["Serif"], None),
    (["usedFonts"], {"en_US": ["Serif"]}, None),
    (["sourceInfo"], {}, "parentprojectfile"),
    (["sourceInfoLocalized", "de_DE"], None, None),
    (["sourceInfoLocalized", "de_DE", "framerate"], ABSENT, "framerate"),
    (["sourceInfoLocalized", "de_DE", "framerate"], 25, "framerate"),
    (["sourceInfoLocalized", "de_DE", "id"], "not a guid", "id"),
    (["sourceInfoLocalized", "de_DE", "duration", "scale"], ABSENT, "scale"),
    (["sourceInfoLocalized", "de_DE", "duration", "value"], 2**63, "value"),
    (["sourceInfoLocalized", "de_DE", "pixelaspectratio", "numerator"], -1, "numerator"),
    (["sourceInfoLocalized", "de_DE", "pixelformatlist"], [{"fourcc": 1}], "properties"),
    (["sourceInfoLocalized", "de_DE", "audiochannellayout"], [100], "audiochannellayout"),
    (["sourceInfoLocalized", "de_DE", "name"], None, "name"),
    (["sourceInfoLocalized", "de_DE", "starttime"], None, "starttime"),
    (["sourceInfoLocalized", "de_DE", "colorAwareEffectsEnabled"], True, "colorAwareEffectsEnabled"),
    (["sourceInfoLocalized", "de_DE", "isdropframe"], 1, "isdropframe"),
    (["sourceInfoLocalized", "de_DE", "colorSpace", "baseColorProfile", "colorProfileData"], "AAE", "colorProfileData"),
    (["sourceInfoLocalized", "de_DE", "colorSpace", "baseColorProfile", "colorProfileData"], "AAF=",
     "colorProfileData"),
    (["sourceInfoLocalized", "de_DE", "capsuleparams", "params", 0, "value"], {}, "value"),
    (["sourceInfoLocalized", "de_DE", "veldenassetrequestinfo"], {"mServerConnectInfo": {"mHeaders": [["X"]]}},
     "mHeaders"),
    (["sourceInfoLocalized", "de_DE", "missingassets", "missAssetsPropMissingFonts"], {}, "missAssetsPropMissingFonts"),
    (["clientControls"], {}, None),
    (["clientControls", "tilt"], "angle", None),
    (["clientControls", "tilt", "type"], "3", None),
    (["clientControls", "tilt", "type"], ABSENT, "type"),
    (["clientControls", "tilt", "id"], ABSENT, None),
    (["clientControls", "tilt", "canAnimate"], ABSENT, "canAnimate"),
    (["clientControls", "tilt", "uiName"], "Tilt", None),
    (["clientControls", "tilt", "value"], ABSENT, "value"),
    (["clientControls", "shadow", "value"], 1, "value"),
    (["clientControls", "size", "max"], ABSENT, "max"),
    (["clientControls", "size", "value"], "72", "value"),
    (["clientControls", "bar", "value"], [0.1, 0.2, 0.3], "value"),
    (["clientControls", "bar", "value"], {"r": 1}, "value"),
    (["clientControls", "position", "value"], [960, 880], "value"),
    (["clientControls", "position", "value", "y"], ABSENT, "y"),
    (["clientControls", "team", "value"], "Home", "value"),
    (["clientControls", "team", "fonteditinfo", "fontSize"], "72", "fontSize"),
    (["clientControls", "team", "fonteditinfo"], 7, None),
    (["clientControls", "team", "alternateRectInfo", "layerId"], ABSENT, "layerId"),
    (["clientControls", "hint", "value", "strDB"], ABSENT, "value"),
    (["clientControls", "hint", "value", "strDB", 0, "str"], {}, "value"),
    (["clientControls", "style", "value"], 10**20, "value"),
    (["clientControls", "scale", "dimensions"], 2.5, "dimensions"),
    (["clientControls", "scale", "linked"], ABSENT, "linked"),
    (["clientControls", "texts", "groupexpanded"], ABSENT, "groupexpanded"),
    (["clientControls", "texts", "value"], [1], "value"),
    (["clientControls", "style", "value"], 3000000000, "value"),
    (["clientControls", "style", "menucontent"], ["Flat"], "menucontent"),
    (["clientControls", "logo", "cacheID"], ABSENT, "cacheID"),
    (["clientControls", "logo", "replacementFit"], "fill", "replacementFit"),
    (["clientControls", "scores", "minRows"], -1, "minRows"),
    (["clientControls", "scores", "columnInfo", 0, "columnName"], "Team", "columnName"),
    (["clientControls", "scores", "value", "columnValues", 3, 0], {"date": "29.2.2024"}, "columnValues"),
    (["clientControls", "scores", "value", "columnValues", 3, 0], {"date": "2024-02-29", "time": "10:00"},
     "columnValues"),
]

# What readers take although writers put it otherwise.
ACCEPTED = [
    (["apiVersion"], "0.3"),
    (["apiVersion"], "2.25"),
    (["unknownKey"], {"any": [1, None]}),
    (["capsuleNameLocalized"], {"strDB": [{"str": "no locale"}]}),
    (["usedFonts"], ["Serif"]),
    (["clientControls", "tilt"], {"type": 7, "id": "x", "canAnimate": False}),
    (["clientControls", "tilt", "value"], 12),
    (["clientControls", "tilt", "value"], 10**20),
    (["clientControls", "scale", "dimensions"], 2.0),
    (["clientControls", "team", "fonteditinfo"], {"kerning": 1}),
    (["clientControls", "logo", "replacementFit"], ABSENT),
    (["sourceInfoLocalized", "de_DE", "colorSpace"], {}),
    (["sourceInfoLocalized", "de_DE", "missingassets"], ABSENT),
    (["sourceInfoLocalized", "de_DE", "id"], "{0F74559A-4F40-5F9A-B1EE-EA2DBD7812D8}"),
    (["sourceInfoLocalized", "de_DE", "veldenassetrequestinfo"],
     {"mServerConnectInfo": {"mHeaders": {"X": "y"}}, "mAssetInfo": {"mProductionRevision": 7}}),
]

# Elements of a library's manifest: both schema and reader take or refuse them, or the reader refuses them for their
# bytes, which a schema does not count.
ELEMENTS = [({"files": {"primary": path}}, outcome) for outcome, paths in {
    "taken": ["a", "./a//b/", "a b/.c", "x..y", "icon/con1", "com10.txt", "nulls", "字/ü.zelt", "x" * 255],
    "refused": ["", ".", "././", "/a", "../a", "a/../b", "a\\b", "c:a", "a?", "a\n", "a\n/../b", "a\u2028/../b", "\x7f/b",
                "x..", "a/tr ", "a./b", " /b", "con", "a/aux.txt/b", "COM1", "lpt\u00b2 .x", "CONOUT$", "x" * 256],
    "bytes": ["字" * 86, "/".join("ü" * 500)],
}.items() for path in paths] + [
    ({"name": "x" * 1024}, "taken"),
    ({"name": "x" * 1025}, "refused"),
    ({"name": "ü" * 513}, "bytes"),
    ({"files": {"primary": "a", "x" * 1024: "a"}}, "taken"),
    ({"files": {"primary": "a", "x" * 1025: "a"}}, "refused"),
    ({"files": {"primary": "a", "ü" * 513: "a"}}, "bytes"),
]


def changed(path, value):
    document = copy.deepcopy(json.loads(EXAMPLE.read_text(encoding="utf-8")))
    place = document
    *way, last = path
    for i, step in enumerate(path):
        if place is document.get("clientControls") and isinstance(step, str):
            step = next(n for n, control in enumerate(place) if control["id"] == step)
        if i == len(way):
            last = step
        else:
            place = place[step]
    if value is ABSENT:
        del place[last]
    else:
        place[last] = value
    return document


def run(*arguments):
    return subprocess.run([WRITER, *map(str, arguments)], check=True, capture_output=True).stdout.decode("utf-8")


def read_back(documents):
    """What the library makes of each document: its text, "refused" or "missing KEY"."""
    with tempfile.TemporaryDirectory() as folder:
        files = [pathlib.Path(folder, f"{i}.json") for i in range(len(documents))]
        for file, document in zip(files, documents):
            file.write_text(json.dumps(document), encoding="utf-8")
        return run("read", *files).split("\n")[:-1]


def samples():
    for package in sorted((ROOT / "samples").glob("*.zelt")):
        with zipfile.ZipFile(package) as archive:
            yield package.name, json.loads(archive.read("definition.json").decode("utf-8-sig"))


def written():
    with tempfile.TemporaryDirectory() as folder:
        run("write", folder)
        return {p.name: json.loads(p.read_text(encoding="utf-8")) for p in pathlib.Path(folder).iterdir()}


def keys_of(value, path=()):
    """Every key below `value` but locales and the keys of records that keep what they do not know."""
    if isinstance(value, dict):
        for key, child in value.items():
            if path[-1:] not in (("sourceInfoLocalized",), ("usedFontsLocalized",)):
                yield key
            yield from keys_of(child, path + (key,))
    elif isinstance(value, list):
        for child in value:
            yield from keys_of(child, path)


def schema_keys(schema):
    if isinstance(schema, list):
        for each in schema:
            yield from schema_keys(each)
    elif isinstance(schema, dict):
        for word, inner in schema.items():
            if word in ("properties", "$defs"):
                yield from inner if word == "properties" else ()
                inner = list(inner.values())
            yield from schema_keys(inner)


class DefinitionTest(unittest.TestCase):
    maxDiff = None

    def assertValid(self, document, name):
        errors = [f"{'/'.join(map(str, e.absolute_path))}: {e.message[:200]}" for e in VALIDATOR.iter_errors(document)]
        self.assertEqual(errors, [], name)

    def test_schema_is_one(self):
        jsonschema.Draft202012Validator.check_schema(SCHEMA)

    def test_library_manifests(self):
        """What the schema says of an element, the reader of libraries does."""
        schema = json.loads((ROOT / "docs/cloud-library.schema.json").read_text(encoding="utf-8"))
        jsonschema.Draft202012Validator.check_schema(schema)
        validator = jsonschema.Draft202012Validator(schema)
        manifests = [json.loads(p.read_text(encoding="utf-8")) for p in (ROOT / "samples/libraries").glob("*/library.json")]
        self.assertEqual([validator.is_valid(manifest) for manifest in manifests], [True] * 2)
        self.assertEqual(run("libraries", ROOT / "samples/libraries"), "")
        elements = [{"id": str(i), "name": "", "type": "capsule", "files": {"primary": "a"}, **what}
                    for i, (what, _) in enumerate(ELEMENTS)]
        with tempfile.TemporaryDirectory() as root:
            pathlib.Path(root, "l").mkdir()
            pathlib.Path(root, "l/library.json").write_text(json.dumps({**manifests[0], "elements": elements}), "utf-8")
            told = dict(line.split(" ", 1) for line in run("libraries", root).splitlines())
        for element, (what, outcome) in zip(elements, ELEMENTS):
            with self.subTest(what):
                self.assertEqual(validator.is_valid({**manifests[0], "elements": [element]}), outcome != "refused")
                self.assertEqual(told[element["id"]].endswith("is not there yet"), outcome == "taken")

    def test_samples_satisfy_the_schema_before_and_after_the_library(self):
        packages = list(samples())
        self.assertGreaterEqual(len(packages), 7)
        for name, document in packages:
            with self.subTest(name):
                text = read_back([document])[0]
                if name == "from-the-future.zelt":
                    self.assertFalse(VALIDATOR.is_valid(document))
                    self.assertEqual(text, "refused")
                    continue
                self.assertValid(document, name)
                self.assertValid(json.loads(text), name)

    def test_written_documents_satisfy_the_schema(self):
        documents = written()
        self.assertGreaterEqual(len(documents), 10)
        for name, document in documents.items():
            with self.subTest(name):
                self.assertValid(document, name)

    def test_example_is_what_the_library_writes(self):
        self.assertEqual(run("canonical", EXAMPLE), EXAMPLE.read_text(encoding="utf-8"))
        self.assertValid(json.loads(EXAMPLE.read_text(encoding="utf-8")), "example")

    def test_broken_documents_fail(self):
        documents = [changed(path, value) for path, value, _ in BROKEN]
        for (path, value, outcome), document, text in zip(BROKEN, documents, read_back(documents)):
            with self.subTest("/".join(map(str, path)), value=value):
                self.assertFalse(VALIDATOR.is_valid(document))
                if outcome is None:
                    self.assertTrue(text.startswith("{"), text)
                else:
                    self.assertEqual(text, outcome if outcome == "refused" else f"missing {outcome}")

    def test_other_forms_that_readers_take_satisfy_the_schema(self):
        documents = [changed(path, value) for path, value in ACCEPTED]
        for (path, _), document, text in zip(ACCEPTED, documents, read_back(documents)):
            with self.subTest("/".join(map(str, path))):
                self.assertValid(document, path)
                self.assertValid(json.loads(text), path)

    def test_defaults_are_what_readers_take_for_absent(self):
        """Every default of the schema, put in the place of the example's value, reads as the absence of the key does."""
        cases = []

        def look(schema, value, path):
            schema = SCHEMA["$defs"][schema["$ref"].split("/")[-1]] | schema if "$ref" in schema else schema
            for key, inner in schema.get("properties", {}).items():
                if isinstance(value, dict) and key in value:
                    cases.extend([(path + [key], inner["default"])] if "default" in inner else [])
                    look(inner, value[key], path + [key])
            if isinstance(value, list) and "items" in schema and path != ["clientControls"]:
                for number, child in enumerate(value[:1]):
                    look(schema["items"], child, path + [number])
            for child in list(value)[:1] if isinstance(schema.get("additionalProperties"), dict) else []:
                look(schema["additionalProperties"], value[child], path + [child])

        example = json.loads(EXAMPLE.read_text(encoding="utf-8"))
        look(SCHEMA, example, [])
        kinds = {case["if"]["properties"]["type"]["const"]: case["then"] for case in SCHEMA["$defs"]["control"]["allOf"]}
        for control in example["clientControls"]:
            look(kinds[control["type"]], control, ["clientControls", control["id"]])
        self.assertGreater(len(cases), 50)
        absent = read_back([changed(path, ABSENT) for path, _ in cases])
        for (path, _), one, other in zip(cases, absent, read_back([changed(*case) for case in cases])):
            self.assertEqual(one, other, path)

    def test_every_code_of_a_finding_is_on_its_page(self):
        page = (ROOT / "docs/findings.md").read_text(encoding="utf-8")
        sources = "".join(p.read_text(encoding="utf-8") for p in (ROOT / "validation").rglob("*.cpp"))
        codes = set(re.findall(r'Severity::(?:Error|Warning),\s*"([A-Za-z]+)"', sources))
        codes |= set(re.findall(r'(?:OfText\(|\? )"([A-Z][a-z]+[A-Z][A-Za-z]+)"[,:\s]', sources))
        self.assertGreater(len(codes), 30)
        self.assertEqual(codes - set(re.findall(r"`([A-Za-z]+)`", page)), set())

    def test_page_and_schema_name_every_key(self):
        page = (ROOT / "docs/definition-format.md").read_text(encoding="utf-8")
        named = set(re.findall(r'`"?([A-Za-z]+)"?`', page))
        of_schema = set(schema_keys(SCHEMA))
        example = json.loads(EXAMPLE.read_text(encoding="utf-8"))
        self.assertEqual(set(keys_of(example)) - of_schema, set(), "not in the schema")
        self.assertEqual(of_schema - named, set(), "not in the page")


if __name__ == "__main__":
    WRITER = sys.argv.pop(1)
    unittest.main()
