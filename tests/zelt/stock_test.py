#!/usr/bin/env python3
"""Runs `zelt stock` against its own development service, and that service against the contract's OpenAPI document.

usage: stock_test.py ZELT SAMPLES OPENAPI [EMULATOR...]     (exits 77 where python3-jsonschema is not installed)
"""
import contextlib
import http.client
import json
import os
import pathlib
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import unittest
import unittest.mock
import urllib.parse
import zipfile
import zlib

try:
    import jsonschema
except ImportError:
    print("skipped: python3-jsonschema is not installed; scripts/setup installs it")
    sys.exit(77)

ZELT = SAMPLES = CONTRACT = EMULATOR = None
JSON_KEYS = "index total id name creator tags width height thumbnailURL previewURL metadataURL".split()
KEY_OF_FILE = {"metadata": "definition.json", "thumbnail": "thumb.png", "video": "thumb.mp4"}


def png(width):
    chunk = lambda name, data: struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, 1, 8, 0, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(bytes(width + 1))) + chunk(b"IEND", b""))


def copy_package(source, target, **changed):
    """A copy of a package with other parts; one that is None is left out."""
    changed = {name.replace("_", "."): content for name, content in changed.items()}
    with zipfile.ZipFile(source) as archive, zipfile.ZipFile(target, "w") as copy:
        for entry in {*archive.namelist(), *changed}:
            content = changed.get(entry, None if entry in changed else archive.read(entry))
            if content is not None:
                copy.writestr(entry, content)


def parts_of(package):
    with zipfile.ZipFile(package) as archive:
        return {name: archive.read(name) for name in archive.namelist()}


class Service:
    """A running `zelt stock serve`."""

    def __init__(self, folder, *options):
        self.command = [*EMULATOR, ZELT, "stock", "serve", str(folder), "--port", "0", *options]

    def __enter__(self):
        self.process = subprocess.Popen(self.command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                        preexec_fn=None if EMULATOR else take_interrupts)
        self.url = self.process.stdout.readline().decode().strip()
        return self

    def __exit__(self, *_):
        self.process.send_signal(signal.SIGTERM if EMULATOR else signal.SIGINT)
        code = self.process.wait(timeout=60)
        self.process.stdout.close()
        assert EMULATOR or code == 0, code

    def ask(self, target, method="GET", **headers):
        connection = http.client.HTTPConnection(urllib.parse.urlsplit(self.url).netloc, timeout=60)
        with contextlib.closing(connection):
            connection.request(method, target, headers={name.replace("_", "-"): v for name, v in headers.items()})
            answer = connection.getresponse()
            return answer, answer.read()

    def ids(self, query):
        answer, body = self.ask("/v1/search?" + query)
        assert answer.status == 200, body
        return [row["id"] for row in json.loads(body)["rows"]]


def take_interrupts():
    signal.signal(signal.SIGINT, signal.SIG_DFL)


class StockTest(unittest.TestCase):
    def setUp(self):
        self.work = pathlib.Path(tempfile.mkdtemp(prefix="zelt-stock-"))
        self.addCleanup(shutil.rmtree, self.work, ignore_errors=True)
        self.folder = self.work / "packages"
        for name, source in [("lower-third", "lower-third"), ("字幕", "字幕タイトル"), ("news/countdown", "countdown"),
                             ("premium/bar-chart", "bar-chart"), ("damaged", "damaged/not-a-zip")]:
            (self.folder / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(SAMPLES / f"{source}.zelt", self.folder / f"{name}.zelt")
        os.environ["TMPDIR"] = str(self.work)

    def zelt(self, *arguments, code=0):
        done = subprocess.run([*EMULATOR, ZELT, "stock", *map(str, arguments)], capture_output=True, timeout=120)
        out, err = done.stdout.decode("utf-8"), done.stderr.decode("utf-8")
        self.assertEqual(done.returncode, code, f"{arguments}\n{out}{err}")
        self.assertEqual(bool(err), code != 0, err)
        return out, err

    def found(self, url, *arguments):
        return [json.loads(line) for line in self.zelt("search", url, "--json", *arguments)[0].splitlines()]


class ContractTest(StockTest):
    """Everything that the document promises is answered so, and nothing else is."""

    def setUp(self):
        super().setUp()
        self.contract = json.loads(CONTRACT.read_text(encoding="utf-8"))
        copy_package(SAMPLES / "lower-third.zelt", self.folder / "news" / "small.zelt", thumb_png=png(200))
        copy_package(SAMPLES / "lower-third.zelt", self.folder / "news" / "jpeg.zelt", thumb_png=b"\xff\xd8\xff" + bytes(99))
        self.seen = set()  # (schema, key), (path, status), media types

    def resolve(self, node):
        while "$ref" in node:
            name = node["$ref"]
            node = self.contract
            for part in name.split("/")[1:]:
                node = node[part]
        return node

    def check_body(self, schema, body):
        whole = {**schema, "components": self.contract["components"]}
        jsonschema.Draft202012Validator(whole, format_checker=jsonschema.FormatChecker()).validate(body)
        self.check_keys(self.resolve(schema), body)

    def check_keys(self, schema, value):
        """Every key of the answer stands in the document; notes it as seen."""
        if isinstance(value, list):
            for item in value:
                self.check_keys(self.resolve(schema.get("items", {})), item)
        for key, item in value.items() if isinstance(value, dict) and "properties" in schema else []:
            self.assertIn(key, schema["properties"])
            self.seen.add((json.dumps(schema["properties"][key]), key))
            self.check_keys(self.resolve(schema["properties"][key]), item)

    def check_answer(self, path, operation, answer, body):
        described = operation["responses"].get(str(answer.status))
        self.assertIsNotNone(described, (path, answer.status, body))
        described = self.resolve(described)
        media = answer.headers.get_content_type()
        self.assertIn(media, described["content"])
        self.seen |= {(path, str(answer.status)), media}
        for name in described.get("headers", {}):
            self.assertIn(name, answer.headers)
        if media == "application/json":
            self.check_body(described["content"][media]["schema"], json.loads(body))

    def operations(self):
        for path, item in self.contract["paths"].items():
            for method, operation in item.items():
                yield path, method.upper(), operation

    def test_every_answer_is_as_described(self):
        columns = next(p for p in self.contract["paths"]["/v1/search"]["get"]["parameters"] if p["name"] == "columns")
        every = "?columns=" + ",".join(columns["schema"]["items"]["examples"])
        failures = {400: ("?count=x", {}), 403: ("", {"Host": "example.com"}), 414: ("?x=" + 9000 * "x", {})}
        with Service(self.folder) as good, Service(self.folder, "--token", "right") as closed:
            for path, method, operation in self.operations():
                for asset in ("lower-third", "news.small", "news.jpeg", urllib.parse.quote("字幕")):
                    answer = good.ask(path.replace("{id}", asset) + every, method)
                    self.check_answer(path, operation, *answer)
                for status in set(map(int, operation["responses"])) - {200}:
                    query, headers = failures.get(status, ("", {}))
                    wrong = path.replace("{id}", "gone")
                    if status in (429, 500, 503):
                        with Service(self.folder, "--fail", str(status), "--retry-after", "1") as failing:
                            answer = failing.ask(path, method)
                    else:
                        service = closed if status == 401 else good
                        answer = service.ask(wrong + query, "POST" if status == 405 else method, **headers)
                    self.assertEqual(answer[0].status, status, (path, answer[1]))
                    self.check_answer(path, operation, *answer)
        promised = {(path, status) for path, _, o in self.operations() for status in o["responses"]}
        promised |= {media for _, _, o in self.operations() for media in o["responses"]["200"]["content"]}
        for schema in self.contract["components"]["schemas"].values():
            promised |= {(json.dumps(described), key) for key, described in schema["properties"].items()}
        self.assertEqual(promised - self.seen, set())

    def test_every_parameter_takes_what_is_described(self):
        with Service(self.folder) as service:
            for parameter in self.contract["paths"]["/v1/search"]["get"]["parameters"]:
                schema = parameter["schema"].get("items", parameter["schema"])
                if parameter["in"] != "query" or schema == {"type": "string"}:
                    continue
                good = schema.get("enum", []) + [schema[key] for key in ("minimum", "maximum", "default") if key in schema]
                bad = []
                if schema["type"] == "integer":
                    bad = ["x", "-1", "1.5", "99999999999", schema["minimum"] - 1, schema["maximum"] + 1]
                elif "enum" in schema or "pattern" in schema:
                    bad = ["x", "2.", "TRUE"]
                name = parameter["name"]
                with_term = "&term=a" if name == "search_premium" else ""
                for value, status in [*((v, 200) for v in good), *((v, 400) for v in bad)]:
                    answer, body = service.ask(f"/v1/search?{name}={value}{with_term}")
                    self.assertEqual(answer.status, status, (name, value, body))


class ServiceTest(StockTest):
    def test_searches(self):
        everything = ["news.countdown", "premium.bar-chart", "lower-third", "字幕"]
        cases = [
            ("", everything), ("term=LOWER&term=clean", ["lower-third"]), ("term=lower&term=chart", []),
            ("term=" + urllib.parse.quote("日本"), ["字幕"]), ("term=tsfx", ["premium.bar-chart", "lower-third"]),
            ("gallery_premium=true", ["premium.bar-chart"]), ("gallery_premium=false&first=1", ["lower-third", "字幕"]),
            ("search_premium=true", everything), ("term=tsfx&search_premium=true", ["premium.bar-chart"]),
            ("template_type=7&source=zelt&content_template=1", everything), ("template_type=1", []),
            ("api_version=0.9", []), ("category=2", ["premium.bar-chart"]), ("category=1,2", everything[:2]),
            ("first=1&count=2", everything[1:3]), ("first=4", []), ("id=lower-third", ["lower-third"]), ("id=gone", []),
            ("first=1&first=x", everything[1:]),
        ]
        with Service(self.folder) as service:
            for query, expected in cases:
                self.assertEqual(service.ids(query), expected, query)
            row = json.loads(service.ask("/v1/search?columns=video_preview_url&id=lower-third")[1])["rows"][0]
            part, body = service.ask(urllib.parse.urlsplit(row["video_preview_url"]).path, Range="bytes=2-5")
            video = parts_of(SAMPLES / "lower-third.zelt")["thumb.mp4"]
            self.assertEqual((part.status, body), (206, video[2:6]))
            self.assertEqual(service.ask("/v1/assets/lower-third/thumbnail", "HEAD")[1], b"")

    def test_unreadable(self):
        if EMULATOR or os.geteuid() == 0:
            self.skipTest("everything can be read")
        (self.folder / "news").chmod(0)
        self.addCleanup((self.folder / "news").chmod, 0o700)
        with Service(self.folder) as service:
            self.assertEqual(len(service.ids("")), 3)

    def test_token(self):
        with Service(self.folder, "--token", "right") as service, unittest.mock.patch.dict(os.environ):
            self.assertIn("token", self.zelt("search", service.url, code=1)[1])
            os.environ["ZELT_STOCK_TOKEN"] = "right"
            self.assertEqual(len(self.found(service.url)), 4)

    def test_command_line(self):
        taken = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(taken.close)
        folder = str(self.folder)
        for arguments, code in [
            (["serve", folder, "--port", "65536"], 2), (["serve", folder, "--port", "x"], 2), (["serve"], 2),
            (["serve", folder, "--fail", "200"], 2), (["serve", folder, "--lie", "x"], 2), (["search"], 2),
            (["serve", folder, "--copies", "0"], 2), (["serve", folder, "--only", "x"], 2), (["get", "http://a", "b"], 2),
            (["search", "http://a", "--filter", "x"], 2), (["serve", folder, "--port", taken.getsockname()[1]], 1),
            (["serve", folder, "--address", "elsewhere"], 1), (["serve", self.work / "gone"], 1),
            (["search", "ftp://a"], 1), (["get", f"http://127.0.0.1:{taken.getsockname()[1]}x", "a", "-o", "out"], 1),
        ]:
            self.zelt(*arguments, code=code)


class CommandsTest(StockTest):
    def test_search(self):
        with Service(self.folder, "--copies", "70") as service:
            found = self.found(service.url)
            self.assertEqual([list(entry) for entry in found], 280 * [JSON_KEYS])
            self.assertEqual([(entry["index"], entry["total"]) for entry in found], [(i, 280) for i in range(280)])
            self.assertEqual(len({entry["id"] for entry in found}), 280)
            chart = self.found(service.url, "--filter", "premium", "CHART")[0]
            self.assertEqual((chart["name"], chart["creator"], chart["width"]), ("Bar Chart", "tsfx", 1080))
            self.assertEqual(chart["tags"], ["chart", "infographic", "data"])
            self.assertEqual(chart["metadataURL"], service.url + "/v1/assets/premium.bar-chart/metadata")
            self.assertEqual(self.found(service.url, "--filter", "free", "chart"), [])
            self.assertIn("lower-third", self.zelt("search", service.url, "third")[0].split())
        for options, count in [(["--copies", "300"], 1000), (["--copies", "30", "--rows", "7"], 120), (["--rows", "0"], 0)]:
            with Service(self.folder, *options) as service:
                self.assertEqual(len(self.found(service.url)), count, options)

    def test_get(self):
        with Service(self.folder) as service:
            said, _ = self.zelt("get", service.url, "lower-third", "-o", self.work / "new" / "out")
            parts = parts_of(SAMPLES / "lower-third.zelt")
            files = {file.name: file.read_bytes() for file in (self.work / "new" / "out").iterdir()}
            self.assertEqual(files, {name: parts[name] for name in KEY_OF_FILE.values()})
            self.assertEqual(len(said.splitlines()), 3)
            self.zelt("get", service.url, "字幕", "-o", self.work / "second")
            self.assertIn("no such template", self.zelt("get", service.url, "gone", "-o", self.work / "none", code=1)[1])
        self.assertFalse((self.work / "none").exists())

    def test_service_at_fault(self):
        """What each fault does to a search, and to getting files when it concerns these only."""
        cases = [
            (["--fail", "500"], 1), (["--fail", "429", "--retry-after", "0"], 1), (["--cut"], 1),
            (["--fail", "503", "--retry-after", "0", "--times", "1"], 0), (["--redirect", "loop"], 1),
            (["--redirect", "loop", "--times", "2"], 0), (["--redirect", "ftp://127.0.0.1"], 1), (["--slow", "1"], 0),
            (["--lie", "longer"], 1), (["--lie", "shorter", "--only", "files"], 1), (["--fail", "404"], 1),
        ]
        for options, code in cases:
            with Service(self.folder, *options) as service:
                if "--only" not in options:
                    self.zelt("search", service.url, "third", code=code)
            out = self.work / "out"
            with Service(self.folder, *options, *(["--only", "files"] if "--only" not in options else [])) as service:
                self.zelt("get", service.url, "lower-third", "-o", out, code=code)
            self.assertEqual(out.exists(), code == 0, options)
            shutil.rmtree(out, ignore_errors=True)

    def test_interrupted(self):
        if EMULATOR or os.name == "nt":
            self.skipTest("signals are POSIX's")
        with socket.create_server(("127.0.0.1", 0)) as silent:
            url = f"http://127.0.0.1:{silent.getsockname()[1]}"
            for command in (["search", url], ["get", url, "a", "-o", str(self.work / "out")]):
                with subprocess.Popen([ZELT, "stock", *command], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                      preexec_fn=take_interrupts) as process:
                    connection, _ = silent.accept()
                    with connection:
                        connection.recv(1)
                        process.send_signal(signal.SIGINT)
                        out, err = process.communicate(timeout=60)
                self.assertEqual((process.returncode, out, err), (130, b"", b"zelt: cancelled\n"))
            self.assertFalse((self.work / "out").exists())


if __name__ == "__main__":
    ZELT, SAMPLES, CONTRACT = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
    EMULATOR = sys.argv[4:]
    os.environ["LC_ALL"] = "C.UTF-8"
    unittest.main(argv=sys.argv[:1], verbosity=2)
