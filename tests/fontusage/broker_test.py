#!/usr/bin/env python3
"""Sends font uses from a program of its own to zelt's broker, and reads what arrives with Python's XML and JSON.

usage: broker_test.py ZELT SENDER SAMPLES [EMULATOR...]
"""
import base64
import contextlib
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest
import uuid
import xml.etree.ElementTree

ZELT = SENDER = SAMPLES = EMULATOR = None
NAME = "tarsk.SuiteMessage.kerbel.FontUses"
KEYS = ["sync_font_id", "document_id", "used_at", "operation"]
AWKWARD = [b"", b" ", b"plain", b"\"'<&>]]>", b"a\r\nb\rc\n\t ", b"\0", b"a\0b", bytes(range(32)), b"\x7f", b"\xff\xfe",
           b"\xc0\x80", b"\xed\xa0\x80", "\ufffe".encode(), "\uffff".encode(), "\u0085\u2028字🎬".encode(),
           b"<![CDATA[x]]><!-- -->&amp;&#0;", b"AA==", b"y" * 65536, "é<".encode() * 32768]


def take_interrupts():
    """In a child before it runs: a shell in the background has its children ignore Ctrl-C."""
    signal.signal(signal.SIGINT, signal.SIG_DFL)


def use_of(message):
    """The four values of a message, as bytes."""
    root = xml.etree.ElementTree.fromstring(message["body"].encode("utf-8"))
    uses = root.find("uses")
    assert (message["name"], root.tag, root.findtext("type"), uses.attrib, len(uses)) == (
        NAME, "Message", "kerbel.FontUses", {"type": "array"}, 1), message
    fields = {f.tag: base64.b64decode(f.text or "") if f.get("encoding") == "base64" else (f.text or "").encode()
              for f in uses.find("use")}
    assert sorted(fields) == sorted(KEYS), message
    return tuple(fields[key] for key in KEYS)


class BrokerTest(unittest.TestCase):
    maxDiff = 2000

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="orv-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        pipe = EMULATOR or os.name == "nt"
        self.place = f"\\\\.\\pipe\\orv-{uuid.uuid4()}" if pipe else str(self.folder / "broker.sock")
        self.environment = {**os.environ, "ORV_BROKER": self.place}

    @contextlib.contextmanager
    def broker(self, messages=None):
        """zelt's broker; without a number of messages it is killed at the end."""
        count = ["--messages", str(messages)] if messages else []
        with open(self.folder / "out", "wb") as out, subprocess.Popen(
                [*EMULATOR, ZELT, "broker", "--listen", self.place, *count], stdout=out, stderr=subprocess.PIPE,
                preexec_fn=take_interrupts if os.name == "posix" else None) as process:
            line = process.stderr.readline().decode("utf-8")
            self.assertEqual(line.rstrip("\r\n"), f"zelt: listening at {self.place}")
            try:
                yield process
                if messages:
                    self.assertEqual((process.wait(timeout=120), process.stderr.read()), (0, b""))
            finally:
                process.kill()

    def received(self):
        return [json.loads(line) for line in (self.folder / "out").read_bytes().splitlines()]

    def send(self, uses, threads=1, seconds=60):
        file = self.folder / "uses"
        file.write_text("".join(",".join(value.hex() for value in use) + "\n" for use in uses))
        name = f"Z:{file}" if EMULATOR else str(file)
        done = subprocess.run([*EMULATOR, SENDER, name, str(threads), str(seconds)], env=self.environment, capture_output=True, timeout=300)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        return done.stdout.decode("utf-8").splitlines()

    def fonts(self, *arguments, code=0):
        done = subprocess.run([*EMULATOR, ZELT, "fonts", *arguments], env=self.environment, capture_output=True, timeout=120,
                              cwd=SAMPLES)
        self.assertEqual(done.returncode, code, done.stderr)
        return done.stdout.decode("utf-8"), done.stderr.decode("utf-8")

    def test_every_value_arrives_as_it_is(self):
        uses = [(a, AWKWARD[i - 1], AWKWARD[i - 2], AWKWARD[i - 3]) for i, a in enumerate(AWKWARD)] + [(b"",) * 4]
        with self.broker(len(uses)):
            self.assertEqual(self.send(uses), [f"{len(uses)} delivered"])
        self.assertEqual([use_of(message) for message in self.received()], uses)

    def test_a_thousand_messages_from_eight_threads(self):
        uses = [(b"font-%d" % i, b"doc", b"now", b"use") for i in range(1000)]
        with self.broker(len(uses)):
            self.assertEqual(self.send(uses, 8), ["1000 delivered"])
        self.assertEqual(sorted(map(use_of, self.received())), sorted(uses))

    def test_without_a_broker(self):
        self.assertEqual(self.send([(b"f", b"d", b"n", b"u")]), ["1 no broker listens"])
        _, err = self.fonts("untitled.zelt", "字幕タイトル.zelt", "--report", "doc", code=1)
        self.assertRegex(err, "zelt: doc: the font .* was not reported: no broker listens")

    def test_a_broker_that_stops_and_one_that_dies(self):
        if EMULATOR or os.name == "nt":
            self.skipTest("signals reach the emulator, not the program")
        use = (b"f", b"d", b"n", b"u" * 1000000)
        with self.broker() as process:
            process.send_signal(signal.SIGSTOP)
            self.assertEqual(self.send([use], seconds=1), ["1 the broker took too long"])
        self.assertEqual(self.send([use]), ["1 no broker listens"])
        self.assertTrue(os.path.exists(self.place))
        with self.broker() as process:  # takes the dead one's place
            self.assertEqual(self.send([use]), ["1 delivered"])
            process.send_signal(signal.SIGINT)
            self.assertEqual((process.wait(timeout=120), os.path.exists(self.place)), (0, False))

    def test_fonts_are_listed_and_reported(self):
        files = ["lower-third.zelt", "classic-title.zelt", "countdown.zelt"]
        with self.broker(5):
            out, _ = self.fonts("--json", *files, "damaged/empty.zelt", "--report", "doc ✓", code=1)
        lines = [json.loads(line) for line in out.splitlines()]
        self.assertEqual([line["ok"] for line in lines], [True, True, True, False])
        names = [{locale: [font["name"] for font in fonts] for locale, fonts in line["fonts"].items()} for line in lines[:3]]
        self.assertEqual(names, [{"en_US": ["DejaVuSans-Bold", "DejaVuSans"], "ja_JP": ["NotoSansCJKjp-Bold"]},
                                 {"en_US": ["DejaVuSerif-Bold"]}, {"en_US": ["DejaVuSansMono"]}])
        uses = list(map(use_of, self.received()))
        self.assertEqual([(font, document, operation) for font, document, _, operation in uses],
                         [(name.encode(), "doc ✓".encode(), b"use") for name in
                          ("DejaVuSans", "DejaVuSans-Bold", "DejaVuSansMono", "DejaVuSerif-Bold", "NotoSansCJKjp-Bold")])

    def test_missing_fonts_are_marked(self):
        out, _ = self.fonts("lower-third.zelt")
        self.assertEqual(out.splitlines()[0], "lower-third.zelt")
        marked = {line.split()[1]: line.endswith(" (missing)") for line in out.splitlines()[1:]}
        self.assertEqual(list(marked), ["DejaVuSans-Bold", "DejaVuSans", "NotoSansCJKjp-Bold"])
        if EMULATOR or not shutil.which("fc-list"):
            return
        there = subprocess.run(["fc-list", "--format", "%{postscriptname}\n"], capture_output=True, text=True).stdout.split()
        self.assertEqual(marked, {name: name not in there for name in marked})
        empty = self.folder / "fonts.conf"
        empty.write_text("<fontconfig/>")
        self.environment["FONTCONFIG_FILE"] = str(empty)
        self.assertEqual(self.fonts("lower-third.zelt")[0].count("(missing)"), 3)

    def test_command_line(self):
        for arguments in ([], ["--listen", ""], ["--listen", self.place, "--messages", "0"],
                          ["--listen", self.place, "--messages", "x"]):
            done = subprocess.run([*EMULATOR, ZELT, "broker", *arguments], capture_output=True, timeout=120)
            self.assertEqual((done.returncode, done.stdout), (2, b""), arguments)
        done = subprocess.run([*EMULATOR, ZELT, "broker", "--listen", "no/such/place"], capture_output=True, timeout=120)
        self.assertEqual(done.returncode, 1, done.stderr)


if __name__ == "__main__":
    ZELT, SENDER, SAMPLES, *EMULATOR = (os.path.abspath(a) if i < 3 else a for i, a in enumerate(sys.argv[1:]))
    unittest.main(argv=sys.argv[:1])
