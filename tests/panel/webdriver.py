"""A headless Chromium, driven over the WebDriver protocol with what Python itself has."""

import base64
import json
import shutil
import subprocess
import tempfile
import time
import urllib.error
import urllib.request

ELEMENT = "element-6066-11e4-a52e-4f735466cecf"
KEYS = {"Enter": "\ue007", "Escape": "\ue00c", "Tab": "\ue004", "End": "\ue010", "Home": "\ue011", "Left": "\ue012",
        "Up": "\ue013", "Right": "\ue014", "Down": "\ue015", "PageDown": "\ue00f", "Space": " "}


def is_there():
    return shutil.which("chromedriver") is not None


class Browser:
    """A browser with one window. Waits end as soon as what they wait for is there, or fail after their time."""

    def __init__(self, width=1280, height=800, scheme="light", reduced_motion=False, language="en-GB"):
        self.profile = tempfile.TemporaryDirectory()
        self.driver = subprocess.Popen(["chromedriver", "--port=0"], stdout=subprocess.PIPE, text=True)
        for line in self.driver.stdout:
            if "successfully on port" in line:
                self.base = "http://127.0.0.1:" + line.rsplit(" ", 1)[1].strip().rstrip(".")
                break
        # Root in a container has no sandbox, and a container's /dev/shm is small.
        arguments = ["--headless=new", "--no-sandbox", "--disable-dev-shm-usage", "--disable-gpu", "--hide-scrollbars",
                     "--user-data-dir=" + self.profile.name, "--lang=" + language, "--mute-audio",
                     "--window-size=%d,%d" % (width, height)]
        capabilities = {"browserName": "chrome", "goog:chromeOptions": {"args": arguments},
                        "goog:loggingPrefs": {"browser": "ALL"}, "unhandledPromptBehavior": "ignore"}
        self.base += "/session/" + self._send("POST", "/session", {"capabilities": {"alwaysMatch": capabilities}})["sessionId"]
        self.look(width, height, scheme, reduced_motion)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        try:
            self._send("DELETE", "", None)
        finally:
            self.driver.terminate()
            self.driver.wait()
            self.driver.stdout.close()
            self.profile.cleanup()

    def _send(self, method, path, body):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.base + path, data, {"Content-Type": "application/json"}, method=method)
        try:
            with urllib.request.urlopen(request, timeout=120) as answer:
                return json.load(answer)["value"]
        except urllib.error.HTTPError as error:
            raise AssertionError("WebDriver %s: %s" % (path, json.load(error)["value"]["message"])) from None

    def command(self, name, parameters):
        """One of the browser's own development commands."""
        return self._send("POST", "/goog/cdp/execute", {"cmd": name, "params": parameters})

    def look(self, width, height, scheme="light", reduced_motion=False):
        self.command("Emulation.setDeviceMetricsOverride",
                     {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})
        self.command("Emulation.setEmulatedMedia", {"features": [
            {"name": "prefers-color-scheme", "value": scheme},
            {"name": "prefers-reduced-motion", "value": "reduce" if reduced_motion else "no-preference"}]})

    def open(self, url):
        self._send("POST", "/url", {"url": url})

    def run(self, script, *arguments):
        """What a function's body returns in the page; a promise's value when it is settled."""
        return self._send("POST", "/execute/sync", {"script": script, "args": list(arguments)})

    def wait(self, what, script, *arguments, seconds=60):
        """Waits until a function's body answers something true, and returns that."""
        end = time.monotonic() + seconds
        while True:
            answer = self.run(script, *arguments)
            if answer:
                return answer
            assert time.monotonic() < end, "the page never showed: " + what
            self.run("return new Promise((done) => requestAnimationFrame(() => setTimeout(done, 10)))")

    def find(self, selector):
        return self._send("POST", "/element", {"using": "css selector", "value": selector})[ELEMENT]

    def click(self, selector):
        self._send("POST", "/element/%s/click" % self.find(selector), {})

    def hover(self, selector):
        self._send("POST", "/actions", {"actions": [{"type": "pointer", "id": "mouse", "actions": [
            {"type": "pointerMove", "duration": 0, "origin": {ELEMENT: self.find(selector)}, "x": 0, "y": 0}]}]})

    def type(self, *keys):
        """Presses keys one after the other, texts letter by letter, for whatever has the focus."""
        presses = []
        for key in keys:
            for letter in KEYS.get(key, key):
                presses += [{"type": "keyDown", "value": letter}, {"type": "keyUp", "value": letter}]
        self._send("POST", "/actions", {"actions": [{"type": "key", "id": "keys", "actions": presses}]})

    def write(self, selector, text):
        """Replaces what a field holds."""
        self.run("arguments[0].focus(); arguments[0].select()", {ELEMENT: self.find(selector)})
        self.type(text)

    def choose(self, selector, value):
        self.run("const e = arguments[0]; e.value = arguments[1]; e.dispatchEvent(new Event('change', {bubbles: true}))",
                 {ELEMENT: self.find(selector)}, value)

    def text(self, selector):
        return self.run("return document.querySelector(arguments[0])?.innerText ?? ''", selector)

    def complaints(self):
        """What the page has written to the console as an error since this was asked last."""
        return [entry["message"] for entry in self._send("POST", "/se/log", {"type": "browser"})
                if entry["level"] == "SEVERE"]

    def accessibility(self):
        """The accessibility tree as a list of (role, name), without what is hidden from it."""
        nodes = self.command("Accessibility.getFullAXTree", {})["nodes"]
        return [(node.get("role", {}).get("value", ""), node.get("name", {}).get("value", "")) for node in nodes
                if not node.get("ignored")]

    def picture(self, path):
        with open(path, "wb") as file:
            file.write(base64.b64decode(self._send("GET", "/screenshot", None)))
