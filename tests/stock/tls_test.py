"""Runs `zelt stock` against services over real TLS: without a certificate that somebody vouches for, with redirects, and
over HTTP/2.

usage: tls_test.py TLS|HTTP2 ZELT AUTHORITY     (exits 77 where a tool is missing)

AUTHORITY is the library that makes a program trust the test's own certificate.
"""
import gzip
import http.server
import json
import os
import pathlib
import shutil
import socket
import ssl
import subprocess
import sys
import tempfile
import threading
import unittest

SKIPPED = 77
ZELT = AUTHORITY = FOLDER = None
NGHTTPX = shutil.which("nghttpx", path=os.environ["PATH"] + ":/usr/sbin")
SECRETS = {"ZELT_STOCK_TOKEN": "token", "ZELT_STOCK_KEY": "key"}


def make_certificate():
    key, certificate = FOLDER / "key.pem", FOLDER / "certificate.pem"
    subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", "/CN=127.0.0.1",
                    "-addext", "subjectAltName=IP:127.0.0.1", "-keyout", key, "-out", certificate],
                   check=True, capture_output=True)
    return key, certificate


class Site(http.server.ThreadingHTTPServer):
    """A server that answers as `answer` says, and keeps the requests."""

    def __init__(self, answer, context=None):
        self.answer, self.context, self.requests, self.visits = answer, context, [], 0
        super().__init__(("127.0.0.1", 0), Handler)
        self.url = f"http{'s' if context else ''}://127.0.0.1:{self.server_port}"
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def get_request(self):
        stream, address = super().get_request()
        self.visits += 1
        return self.context.wrap_socket(stream, server_side=True) if self.context else stream, address


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_GET(self):
        self.server.requests.append(self)
        status, headers, body = self.server.answer(self)
        self.send_response(status)
        for name, value in (headers or {"Content-Length": len(body)}).items():
            self.send_header(name, value)
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *_):
        pass


def page(total, rows):
    return 200, {}, json.dumps({"total": total, "rows": rows}).encode()


def run(*arguments, trusting=True):
    environment = {**os.environ, **SECRETS}
    if trusting:
        options = os.environ.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0"
        environment.update(LD_PRELOAD=AUTHORITY, ORV_TEST_AUTHORITY=str(FOLDER / "certificate.pem"), ASAN_OPTIONS=options)
    return subprocess.run([ZELT, "stock", *arguments], env=environment, capture_output=True, text=True, timeout=120)


class TLS(unittest.TestCase):
    def setUp(self):
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(FOLDER / "certificate.pem", FOLDER / "key.pem")
        make = lambda *context: Site(lambda _: page(1, [{"id": "a", "title": "Found"}]), *context)
        self.plain, self.other, self.site = make(), make(context), make(context)
        for site in (self.plain, self.other, self.site):
            self.addCleanup(site.server_close)
            self.addCleanup(site.shutdown)

    def redirect_to(self, target):
        self.site.answer = lambda request: (302, {"Location": target.url + request.path, "Content-Length": 0}, b"")

    def test_a_certificate_that_nobody_vouches_for_is_refused(self):
        refused = run("search", self.site.url, trusting=False)
        self.assertEqual((refused.returncode, self.site.visits, self.site.requests), (1, 1, []), refused)
        self.assertEqual(run("search", self.site.url).returncode, 0)
        self.assertEqual(self.site.requests[0].headers["Authorization"], "Bearer token")

    def test_a_redirect_to_http_is_refused(self):
        self.redirect_to(self.plain)
        refused = run("search", self.site.url)
        self.assertEqual((refused.returncode, self.plain.visits, len(self.site.requests)), (1, 0, 1), refused)
        self.assertIn("redirects", refused.stderr)

    def test_credentials_stay_with_the_host_that_they_are_for(self):
        self.redirect_to(self.other)
        found = run("search", self.site.url)
        self.assertIn("Found", found.stdout, found)
        has = lambda site: [name in site.requests[0].headers for name in ("Authorization", "Stock-Api-Key", "Accept")]
        self.assertEqual((has(self.site), has(self.other)), ([True] * 3, [False, False, True]))


class HTTP2(unittest.TestCase):
    """nghttpx speaks HTTP/2 and asks a server of our own, whose bodies are in chunks: over HTTP/2 without a length."""

    VIDEO = os.urandom(1 << 20)

    def setUp(self):
        with socket.create_server(("127.0.0.1", 0)) as free:
            port = free.getsockname()[1]
        self.url, self.packed = f"https://127.0.0.1:{port}", 0
        self.site, self.log = Site(self.answer), FOLDER / "access.log"
        self.addCleanup(self.site.server_close)
        self.addCleanup(self.site.shutdown)
        self.proxy = subprocess.Popen(
            [NGHTTPX, "--conf=/dev/null", f"--frontend=127.0.0.1,{port}", "--workers=1", "--single-process",
             f"--backend=127.0.0.1,{self.site.server_port}", f"--accesslog-file={self.log}",
             "--accesslog-format=$alpn $remote_port $status", FOLDER / "key.pem", FOLDER / "certificate.pem"],
            stderr=subprocess.PIPE, text=True)
        self.addCleanup(self.stop_proxy)
        for line in self.proxy.stderr:
            if "istening on" in line:
                break
        threading.Thread(target=self.proxy.stderr.read, daemon=True).start()

    def stop_proxy(self):
        self.proxy.terminate()
        self.proxy.wait(60)

    def answer(self, request):
        if "/v1/search" not in request.path:
            body, headers = self.VIDEO, {}
        else:
            row = {"id": "a", "title": "Found", "video_preview_url": self.url + "/video"}
            body = gzip.compress(page(250, [row] * (1 if "id=a" in request.path else 50))[2])
            headers = {"Content-Encoding": "gzip"}
            self.packed += "gzip" in request.headers["Accept-Encoding"]
        body = b"%x\r\n%b\r\n0\r\n\r\n" % (len(body), body)
        return 200, {"Transfer-Encoding": "chunked", **headers}, body

    def test_a_search_and_a_download(self):
        found = run("search", "--json", self.url)
        self.assertEqual((found.returncode, found.stdout.count("Found"), self.packed), (0, 250, 5), found)
        got = run("get", self.url, "a", "-o", str(FOLDER))
        self.assertEqual((got.returncode, (FOLDER / "thumb.mp4").read_bytes() == self.VIDEO), (0, True), got)
        self.stop_proxy()
        lines = [line.split() for line in self.log.read_text().splitlines()]
        self.assertEqual([(alpn, status) for alpn, _, status in lines], [("h2", "200")] * 7)
        self.assertEqual(len({port for _, port, _ in lines}), 2, "one connection for each program")


def main():
    global ZELT, AUTHORITY, FOLDER
    cases, ZELT, AUTHORITY = sys.argv[1:4]
    if not shutil.which("openssl"):
        print("skipped: openssl is not installed")
        return SKIPPED
    if cases == "HTTP2" and not NGHTTPX:
        print("skipped: nghttpx is not installed; scripts/setup --checks installs it")
        return 1 if os.environ.get("ORV_NEED_HTTP2") else SKIPPED
    with tempfile.TemporaryDirectory() as folder:
        FOLDER = pathlib.Path(folder)
        make_certificate()
        return 0 if unittest.main(argv=sys.argv[:2], exit=False).result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main())
