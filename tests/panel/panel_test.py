#!/usr/bin/env python3
"""Runs `zelt browse` and `zelt gallery` and uses their page in a real browser, as people do. Pictures of the main states
go to a folder, for people to look at.

usage: panel_test.py ZELT SAMPLES PICTURES
"""
import contextlib
import http.client
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest
import urllib.parse
import zipfile

import webdriver

ZELT = SAMPLES = PICTURES = None
MANY = 20000
EVIL = "<img src=x onerror=document.title='ran'>"

SHOWN = "return [...document.querySelectorAll('.card .name')].map((e) => e.textContent)"
CARD = "[...document.querySelectorAll('.card')].find((c) => c.querySelector('.name').textContent === arguments[0])"

# Every visible text with a contrast below what WCAG AA asks, against the nearest painted background.
FAINT = """
const light = ([r, g, b]) => [r, g, b].map((c) => c / 255).map((c) => (c <= 0.03928 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4))
  .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
const parts = (colour) => colour.match(/[\\d.]+/g).map(Number);
const over = (top, below) => [0, 1, 2].map((i) => top[i] * (top[3] ?? 1) + below[i] * (1 - (top[3] ?? 1)));
const ground = (e) => {
  if (!e) return parts(getComputedStyle(document.documentElement).backgroundColor);
  const own = parts(getComputedStyle(e).backgroundColor);
  return (own[3] ?? 1) === 1 ? own : over(own, ground(e.parentElement));
};
const found = [];
for (const e of document.querySelectorAll('body *')) {
  const own = [...e.childNodes].some((n) => n.nodeType === 3 && n.textContent.trim());
  if (!(own || (e.matches('input:not([type=checkbox], [type=range], [type=color], [type=radio])') && e.value)) || !e.checkVisibility() || e.closest('.unseen, .skip, noscript')) continue;
  const style = getComputedStyle(e);
  const below = ground(e);
  const [a, b] = [light(over(parts(style.color), below)), light(below)].sort((x, y) => y - x);
  const ratio = (a + 0.05) / (b + 0.05);
  const isLarge = parseFloat(style.fontSize) >= 24 || (parseFloat(style.fontSize) >= 18.66 && style.fontWeight >= 700);
  if (ratio < (isLarge ? 3 : 4.5)) found.push(`${e.className || e.tagName}: ${ratio.toFixed(2)}`);
}
return [...new Set(found)];
"""


def ask(address, path="", method="GET", body=None, **headers):
    """An answer's status, headers and body, of a client that is no browser."""
    url = urllib.parse.urlsplit(address)
    connection = http.client.HTTPConnection(url.hostname, url.port, timeout=60)
    try:
        connection.request(method, url.path + path, body, {name.replace("_", "-"): value for name, value in headers.items()})
        answer = connection.getresponse()
        return answer.status, dict(answer.getheaders()), answer.read()
    finally:
        connection.close()


def definition_of(package):
    with zipfile.ZipFile(package) as archive:
        return json.loads(archive.read("definition.json"))


def replace_in_definition(package, old, new):
    with zipfile.ZipFile(package) as archive:
        parts = {name: archive.read(name) for name in archive.namelist()}
    with zipfile.ZipFile(package, "w") as archive:
        for name, content in parts.items():
            archive.writestr(name, content.replace(old, new) if name == "definition.json" else content)


class PanelTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.page = webdriver.Browser()

    @classmethod
    def tearDownClass(cls):
        cls.page.__exit__()

    def setUp(self):
        self.root = tempfile.TemporaryDirectory()
        self.folder = pathlib.Path(self.root.name, "Templates")
        (self.folder / "damaged").mkdir(parents=True)
        for package in SAMPLES.glob("*.zelt"):
            shutil.copy(package, self.folder)
        shutil.copy(SAMPLES / "damaged/broken-json.zelt", self.folder / "damaged")
        self.page.look(1280, 800)
        self.page.open("about:blank")
        self.page.complaints()

    def tearDown(self):
        self.assertEqual(self.page.complaints(), [])
        self.page.open("about:blank")
        self.root.cleanup()

    @contextlib.contextmanager
    def browsing(self, *arguments):
        """`zelt browse` while it serves; the address of its page. It must end well when it is interrupted."""
        with tempfile.TemporaryDirectory() as temp:
            program = subprocess.Popen(
                [ZELT, "browse", "--no-open", *map(str, arguments)], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                env=os.environ | {"TMPDIR": temp}, preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))
            try:
                yield program.stdout.readline().strip()
                self.page.open("about:blank") # the page would complain of a server that ends
            finally:
                program.send_signal(signal.SIGINT)
                _, err = program.communicate(timeout=60)
            self.assertEqual((program.returncode, err), (0, ""))

    # What people do, in words.

    def show(self, address, shown=8):
        self.page.open("about:blank")
        self.page.open(address)
        self.page.wait("%s templates" % shown, SHOWN.replace("return", "return arguments[0] ==") + ".length", shown)

    def names(self):
        return sorted(self.page.run(SHOWN))

    def wait_for_names(self, *names):
        self.page.wait("exactly %s" % (names,), "const shown = (() => { %s })(); return shown.sort().join() === arguments[0]"
                       % SHOWN, ",".join(sorted(names)))

    def open_details(self, name):
        self.page.wait(name, "return " + CARD, name)
        self.page.run(CARD + ".click()", name)
        self.page.wait("details of " + name,
                       "return document.querySelector('#details h2')?.textContent === arguments[0] && "
                       "!document.querySelector('#details .skeleton')", name)

    def picture(self, name):
        self.page.run("return Promise.all([...document.images].map((i) => i.decode().catch(() => {})))")
        self.page.picture(PICTURES / (name + ".png"))

    # The cases.

    def test_grid_search_language_and_address(self):
        page = self.page
        with self.browsing(self.folder) as address:
            self.show(address)
            for width, scheme in ((320, "dark"), (1280, "light"), (1280, "dark"), (3840, "light")):
                page.look(width, max(640, width * 9 // 16), scheme)
                page.wait("the grid at this width", "return document.querySelector('#grid').scrollWidth <= innerWidth && "
                          "document.documentElement.scrollWidth <= innerWidth && innerWidth === arguments[0]", width)
                self.assertEqual(page.run(FAINT), [], (width, scheme))
                self.picture("grid-%d-%s" % (width, scheme))
            page.look(1280, 800)

            page.write("#search", "字")
            self.wait_for_names("字幕タイトル")
            page.write("#search", "cl")
            page.wait("suggestions", "return document.querySelector('#suggestions [role=option]')")
            self.picture("suggestions")
            page.write("#search", "classi")
            page.wait("the suggestion", "return document.querySelector('#suggestions li')?.textContent === 'classic'")
            page.type("Down", "Enter")
            self.wait_for_names("Classic Title")
            self.assertEqual(page.run("return document.querySelector('#search').value"), "classic")
            page.write("#search", "nothing at all")
            page.wait("the empty state", "return !document.querySelector('#empty').hidden")
            self.picture("nothing-fits")
            page.click("#empty button")
            page.wait("all again", "return document.querySelectorAll('.card').length === 8")

            page.choose("#language", "de_DE")
            page.wait("German", "return " + CARD, "Bauchbinde – schlicht")
            page.click("#filters [data-value='Templates/damaged']")
            self.wait_for_names("broken-json")
            here = page.run("return location.href")
            self.assertIn("lang=de_DE", here)
            self.assertEqual(page.text("#filters [data-value=ready]").split()[-1], "0") # of this folder
            page.run("history.back()")
            page.wait("what was before", "return document.querySelectorAll('.card').length === 8")
            page.run("history.back()")
            page.wait("the language before", "return " + CARD, "Lower Third – Clean")
            self.show(here, 1) # what the address says is found again
            self.assertEqual(self.names(), ["broken-json"])
            page.wait("German again", "return document.querySelector('#language').value === 'de_DE'")

    def test_hover_plays_and_reduced_motion_does_not(self):
        for reduced in (False, True):
            self.page.look(1280, 800, reduced_motion=reduced)
            with self.browsing(self.folder) as address:
                self.show(address)
                card = "#" + self.page.run("return " + CARD + ".id", "Countdown 10s")
                self.page.hover(card)
                if reduced:
                    self.page.run("return new Promise((done) => setTimeout(done, 300))") # nothing may come
                    self.assertFalse(self.page.run("return document.querySelector('.card video')"))
                else:
                    self.page.wait("a video that plays", "const v = document.querySelector('.card video');"
                                   "return v && !v.paused && v.currentTime > 0 && v.closest('.card').id === arguments[0]", card[1:])

    def test_keyboard_and_screen_reader(self):
        page = self.page
        with self.browsing(self.folder) as address:
            self.show(address)
            page.run("document.querySelector('#grid').focus()")
            page.type("Right", "Enter")
            page.wait("the details", "return document.activeElement.closest('#details')")
            self.assertEqual(page.text("#details h2"), "Classic Title" if page.run(SHOWN)[1] == "Classic Title" else page.run(SHOWN)[1])
            page.type("Escape")
            page.wait("the grid again", "return document.activeElement.id === 'grid' && document.querySelector('#details').hidden")
            self.open_details("Lower Third – Clean")
            tree = page.accessibility()
            roles = {role for role, _ in tree}
            self.assertLessEqual({"listbox", "option", "combobox", "navigation", "complementary", "status", "slider", "switch"}, roles)
            for role, name in tree:
                if role in ("button", "option", "combobox", "slider", "switch", "textbox", "searchbox", "spinbutton", "checkbox",
                            "ColorWell", "image", "listbox"):
                    self.assertTrue(name.strip(), (role, tree))
            self.assertTrue(any(role == "option" and "Cannot be read: " in name for role, name in tree))

    def test_details_edit_and_save_as(self):
        page = self.page
        # An id that looks like a change of another control.
        replace_in_definition(self.folder / "lower-third.zelt", b'"s-size"', b'"t-name=s"')
        original = (self.folder / "lower-third.zelt").read_bytes()
        with self.browsing(self.folder) as address:
            self.show(address)
            self.open_details("Lower Third – Clean")
            page.wait("the findings", "return document.querySelector('#details .check').textContent.includes('Nothing is wrong')")
            for scheme in ("light", "dark"):
                page.look(1280, 1800, scheme)
                self.assertEqual(page.run(FAINT), [])
                self.picture("details-" + scheme)
            page.look(320, 640)
            self.picture("details-320")
            page.look(1280, 800)
            kinds = {kind for kind in page.run("return [...document.querySelectorAll('.kind')].map((e) => e.textContent)")}
            self.assertLessEqual({"Slider", "Colour", "Menu", "Check box", "Text", "Point", "Angle", "Scale", "Comment"}, kinds)
            page.write("[data-control='t-name'] textarea", "Anna 字幕")
            page.write("[data-control='t-name=s'] input[type=number]", "64")
            page.click("[data-control='b-shadow'] input")
            page.write("#details [aria-label^='Name in']", "Anna")
            page.choose("#details [data-keep=language]", "de_DE") # draws all again, with the changes and the findings
            self.assertEqual(page.run("return [...document.querySelectorAll('[data-control=\"t-name=s\"] input, [data-control=t-name] textarea')]"
                                      ".map((e) => e.value)"), ["Ihr Name", "64", "64"])
            self.assertIn("Nothing is wrong", page.text("#details .check"))
            page.choose("#details [data-keep=language]", "en_US")
            page.wait("four changes", "return document.querySelector('.changes').textContent === '4 changes'")
            page.click("#details footer .main")
            page.wait("the dialog", "return document.querySelector('#save').open")
            page.write("#save-name", "classic-title")
            page.click("#save .main")
            page.wait("why not", "return document.querySelector('#save .told').textContent.includes('already a file')")
            self.picture("save")
            for name in ("../x", "a/b", ""):
                page.write("#save-name", name) if name else page.run("document.querySelector('#save-name').value = ''")
                page.click("#save .main")
                page.wait("why not " + name, "return /cannot be|needs a file/.test(document.querySelector('#save .told').textContent)")
            page.write("#save-name", "anna")
            page.click("#save .main")
            page.wait("the copy's details", "return document.querySelector('#details h2').textContent === 'Anna' && "
                      "!document.querySelector('#save').open")
            made = definition_of(self.folder / "anna.zelt")
            values = {control["id"]: control.get("value") for control in made["clientControls"]}
            self.assertIn({"localeString": "en_US", "str": "Anna 字幕"}, values["t-name"]["strDB"])
            self.assertEqual((values["t-name=s"], values["b-shadow"]), (64.0, False))
            self.assertIn({"localeString": "en_US", "str": "Anna"}, made["capsuleNameLocalized"]["strDB"])
            self.assertEqual((self.folder / "lower-third.zelt").read_bytes(), original)

            # The original itself, only when that is chosen; a value out of its range is refused with the reason.
            page.write("[data-control='t-name=s'] input[type=number]", "9999")
            page.click("#details footer .main")
            page.click("#save [value=replace]")
            page.click("#save .main")
            page.wait("the reason", "return document.querySelector('#save .told').textContent.includes('outside the range')")
            page.click("#save .end button")
            page.write("[data-control='t-name=s'] input[type=number]", "20")
            page.click("#details footer .main")
            page.click("#save [value=replace]")
            page.click("#save .main")
            page.wait("it is stored", "return !document.querySelector('#save').open")
            values = {c["id"]: c.get("value") for c in definition_of(self.folder / "anna.zelt")["clientControls"]}
            self.assertEqual(values["t-name=s"], 20.0)
            # The browser notes each refusal.
            self.assertEqual([c for c in page.complaints() if not ("/save" in c and "400" in c)], [])

    def test_sheet(self):
        page = self.page
        with self.browsing(self.folder) as address:
            self.show(address)
            self.open_details("Bar Chart")
            page.click("[data-control='data'] [aria-label$='add a row']")
            page.write("[data-control='data'] [aria-label='Label, row 1']", "Sales")
            page.write("[data-control='data'] [aria-label='Value, row 1']", "42.5")
            page.click("#details footer .main")
            page.write("#save-name", "chart")
            page.click("#save .main")
            page.wait("it is stored", "return !document.querySelector('#save').open")
            data = next(c for c in definition_of(self.folder / "chart.zelt")["clientControls"] if c["id"] == "data")
            self.assertEqual(data["value"], {"activeRows": 1, "columnValues": [["Sales"], [42.5]]})

    def test_folders_change_while_they_are_shown(self):
        below = pathlib.Path(self.root.name, "Second", "below")
        below.mkdir(parents=True)
        with self.browsing(self.folder, below.parent) as address:
            self.show(address)
            shutil.copy(self.folder / "untitled.zelt", below / "elsewhere.zelt")
            self.page.wait("a new file of the second folder", "return " + CARD, "elsewhere")
            (below / "elsewhere.zelt").unlink()
            self.page.wait("that it is gone", "return !" + CARD, "elsewhere")
            shutil.copy(self.folder / "untitled.zelt", self.folder / "damaged/late.zelt")
            self.page.wait("a new file", "return " + CARD, "late")
            self.page.write("#search", "la")
            self.page.wait("what is found", "return document.querySelectorAll('.card').length < 8")
            shutil.copy(self.folder / "untitled.zelt", self.folder / "latest.zelt")
            self.page.wait("a new file that the search finds", "return " + CARD, "latest")
            self.page.run("document.querySelector('#search').select()")
            self.page.type("\ue003")
            subprocess.run([ZELT, "set", self.folder / "untitled.zelt", "--name", "Named now"], check=True, capture_output=True)
            self.page.wait("a changed file", "return " + CARD, "Named now")
            self.open_details("late")
            (self.folder / "damaged/late.zelt").unlink()
            self.page.wait("a file that is gone", "return !" + CARD, "late")
            self.page.wait("that the details say so", "return document.querySelector('.told').textContent.includes('no longer there')")

    def test_hostile_texts_and_damaged_packages(self):
        page = self.page
        subprocess.run([ZELT, "set", self.folder / "lower-third.zelt", "--name", EVIL, "--description", EVIL, "--tag", EVIL,
                        "--control", "t-name=" + EVIL], check=True, capture_output=True)
        with self.browsing(self.folder) as address:
            self.show(address)
            self.open_details(EVIL)
            page.write("#search", "<img")
            page.wait("the suggestion", "return document.querySelector('#suggestions li')")
            self.wait_for_names(EVIL)
            self.assertEqual(page.run("return [document.title, document.querySelectorAll('img[onerror], img[src=x]').length]"), ["Templates", 0])
            self.picture("hostile-name")
            page.write("#search", "broken")
            self.wait_for_names("broken-json")
            self.open_details("broken-json")
            self.assertIn("malformed: a text is not closed at line 1, column 491", page.text("#details .why"))
            self.assertIn("malformed", page.run("return " + CARD + ".getAttribute('aria-label')", "broken-json"))
            self.picture("damaged")

    def test_other_pages_and_programs_get_nothing(self):
        outside = pathlib.Path(self.root.name, "outside.zelt")
        shutil.copy(self.folder / "untitled.zelt", outside)
        save = json.dumps({"id": 0, "replace": False, "file": "x", "names": {}, "controls": []})
        with self.browsing(self.folder) as address:
            self.show(address)
            wrong = address[:-2] + ("0" if address[-2] != "0" else "1") + "/"
            here = urllib.parse.urlsplit(address)
            for where, path, method, body, headers, status in (
                    (wrong, "", "GET", None, {}, 403),
                    (wrong, "entries", "GET", None, {}, 403),
                    (address.replace(here.path, "/"), "", "GET", None, {}, 403),
                    (address, "", "GET", None, {"Host": "evil.example:%d" % here.port}, 403),
                    (address, "", "GET", None, {"Host": "127.0.0.1"}, 403),
                    (address, "save", "POST", save, {"Content_Type": "application/json", "Origin": "http://evil.example"}, 403),
                    (address, "save", "POST", save, {"Content_Type": "application/json", "Sec_Fetch_Site": "cross-site"}, 403),
                    (address, "save", "POST", save, {"Content_Type": "text/plain"}, 415),
                    (address, "save", "POST", "{", {"Content_Type": "application/json"}, 400),
                    (address, "save", "POST", "[" * 300, {"Content_Type": "application/json"}, 400),
                    (address, "language", "POST", '{"language": "../x"}', {"Content_Type": "application/json"}, 400),
                    (address, "save", "POST", "x" * (2 << 20), {"Content_Type": "application/json"}, 413),
                    (address, "cancel", "DELETE", None, {}, 405),
                    (address, "details?id=99999", "GET", None, {}, 400),
                    (address, "poster?id=../../etc/passwd", "GET", None, {}, 400),
                    (address, "../../etc/passwd", "GET", None, {}, 400),
                    (address, "outside.zelt", "GET", None, {}, 404)):
                with self.subTest(where=where == wrong, path=path, headers=headers):
                    with contextlib.suppress(BrokenPipeError, ConnectionResetError): # a body beyond the limit is not read
                        self.assertEqual(ask(where, path, method, body, **headers)[0], status)
            status, headers, _ = ask(address)
            self.assertEqual(status, 200)
            self.assertIn("default-src 'none'", headers["Content-Security-Policy"])
            self.assertNotIn("unsafe", headers["Content-Security-Policy"])
            self.assertFalse([name for name in headers if name.lower().startswith("access-control")])
            self.page.open(wrong)
            self.assertIn("zelt browse prints it", self.page.text("body"))
            self.page.complaints()

    def test_many_templates_cancelled_read_on_and_scrolled(self):
        page = self.page
        many = pathlib.Path(self.root.name, "Many")
        for number in range(MANY):
            where = many / ("Part %02d" % (number % 20))
            where.mkdir(parents=True, exist_ok=True)
            os.link(self.folder / "untitled.zelt", where / ("Title %05d.zelt" % number))
        with self.browsing(many) as address:
            page.open(address)
            page.wait("the first templates", "return document.querySelector('.card')")
            self.assertTrue(page.run("return !document.querySelector('#progress').hidden"), "the listing was over at once")
            page.click("#cancel")
            page.wait("that it was cancelled", "return document.querySelector('#progress-text').textContent.includes('cancelled')")
            self.picture("cancelled")
            page.click("#cancel") # reads on
            page.wait("all templates", "return document.querySelector('#count').textContent === arguments[0]", f"{MANY:,} templates", seconds=300)
            self.assertLess(page.run("return document.querySelectorAll('.card').length"), 100)
            # Other programs of a busy machine lengthen tasks: one scroll without a long one shows that the page needs none.
            self.assertTrue(any(page.run(SCROLL) < 200 for _ in range(20)), "every scroll has a long task")
            self.assertEqual(page.run(SHOWN)[-1], "Title %05d" % (MANY - 1))
            self.picture("many")
            page.write("#search", "19999")
            self.wait_for_names("Title 19999")

    def test_stock_pages_come_while_one_scrolls(self):
        page = self.page
        service = subprocess.Popen([ZELT, "stock", "serve", self.folder, "--port", "0", "--copies", "40"], stdout=subprocess.PIPE, text=True)
        try:
            with self.browsing(self.folder, "--stock", service.stdout.readline().strip()) as address:
                page.open(address)
                page.wait("a page of the service", "return document.querySelector('#count').textContent === '108 templates'")
                page.run("document.querySelector('#grid').scrollTop = 1e9")
                page.wait("the next one", "return document.querySelector('#count').textContent === '208 templates'")
                page.write("#search", "countdown")
                page.wait("what both find", "return document.querySelector('#count').textContent === '41 of 48 templates'")
                page.wait("posters", "const all = [...document.querySelectorAll('.card img')];"
                          "return all.length > 1 && all.every((i) => i.classList.contains('here'))")
                card = page.run("return [...document.querySelectorAll('.card')].find((c) => c.querySelector('.badge.stock')).id")
                page.hover("#" + card)
                page.wait("a video", "const v = document.querySelector('.card video'); return v && v.currentTime > 0")
                page.click("#" + card)
                page.wait("a description", "return document.querySelector('#details [data-control=len]')")
                self.picture("stock")
                self.assertFalse(page.run("return document.querySelector('#details footer, #details .check')"))
                service.kill()
                page.write("#search", "timer")
                page.wait("why there are none", "return document.querySelector('#notice').textContent.includes('stock') || "
                          "document.querySelector('#notice').textContent.includes('127.0.0.1')")
                page.complaints()
        finally:
            service.kill()
            service.wait()
            service.stdout.close()

    def test_a_stock_service_that_stalls_holds_up_nothing_else(self):
        service = subprocess.Popen([ZELT, "stock", "serve", self.folder, "--port", "0", "--copies", "10", "--only", "files", "--stall"],
                                   stdout=subprocess.PIPE, text=True)
        try:
            with self.browsing(self.folder, "--stock", service.stdout.readline().strip()) as address, contextlib.ExitStack() as waiting:
                rows = json.loads(ask(address, "stock?first=0")[2])["rows"]
                here = urllib.parse.urlsplit(address)
                for kind in ("poster", "video", "details"):
                    for row in rows[:12]:
                        client = http.client.HTTPConnection(here.hostname, here.port, timeout=60)
                        waiting.callback(client.close)
                        client.request("GET", "%s%s?id=%d" % (here.path, kind, row[0]))
                self.assertEqual(ask(address, "entries")[0], 200)
                self.page.open(address)
                self.page.wait("the service's templates", "return document.querySelectorAll('.badge.stock').length > 5")
                self.open_details("Bar Chart")
        finally:
            service.kill()
            service.wait()
            service.stdout.close()

    def test_wrong_command_lines(self):
        for arguments, code in ((["browse"], 2), (["browse", self.folder, "--port", "70000"], 2), (["gallery", self.folder], 2),
                                (["gallery", self.folder, "-o", self.folder], 1)):
            with self.subTest(arguments=arguments):
                run = subprocess.run([ZELT, *map(str, arguments)], capture_output=True, text=True, timeout=60)
                self.assertEqual((run.returncode, run.stderr.startswith("zelt: ")), (code, True), run.stderr)

    def test_gallery_from_a_disk(self):
        page = self.page
        gallery = pathlib.Path(self.root.name, "Gallery")
        subprocess.run([ZELT, "set", self.folder / "classic-title.zelt", "--name", EVIL], check=True, capture_output=True)
        make = [ZELT, "gallery", self.folder, "-o", gallery]
        for _ in range(2): # an earlier gallery is replaced
            subprocess.run(make, check=True, capture_output=True)
        self.assertEqual(sorted(p.name for p in pathlib.Path(self.root.name).iterdir()), ["Gallery", "Templates"])
        for file in gallery.rglob("*"):
            if file.is_file():
                self.assertNotIn(self.root.name.encode(), file.read_bytes(), file) # nothing tells of this machine
        self.show((gallery / "index.html").as_uri())
        page.write("#search", "ＣＬＥＡＮ")
        self.wait_for_names("Lower Third – Clean")
        page.choose("#language", "ja_JP")
        self.wait_for_names("ローワーサード – クリーン")
        self.open_details("ローワーサード – クリーン")
        page.wait("the findings", "return document.querySelector('#details .check').textContent.includes('Nothing is wrong')")
        self.assertFalse(page.run("return document.querySelector('#details footer, #details textarea:enabled')"))
        page.wait("pictures", "return [...document.querySelectorAll('.card img')].every((i) => i.classList.contains('here'))")
        self.picture("gallery")
        self.assertEqual(page.run("return document.title"), "Templates")
        (gallery / "data/gallery.js").unlink()
        refused = subprocess.run(make, capture_output=True, text=True)
        self.assertEqual(refused.returncode, 1)
        self.assertIn("something else than a gallery", refused.stderr)
        self.assertTrue((gallery / "index.html").exists())


# Scrolls from the top to the end in steps as of a wheel and answers the longest task, in milliseconds.
SCROLL = """
const grid = document.querySelector('#grid');
const tasks = [];
const watch = new PerformanceObserver((list) => tasks.push(...list.getEntries().map((e) => e.duration)));
watch.observe({ type: 'longtask' });
grid.scrollTop = 0;
return new Promise((done) => {
  let step = 0;
  const scroll = () => {
    grid.scrollTop += step % 4 === 3 ? grid.scrollHeight / 30 : 400;
    step += 1;
    if (step < 120) requestAnimationFrame(scroll);
    else {
      grid.scrollTop = grid.scrollHeight;
      requestAnimationFrame(() => requestAnimationFrame(() => setTimeout(() => done(Math.max(0, ...tasks)), 50)));
    }
  };
  scroll();
});
"""

if __name__ == "__main__":
    ZELT = os.path.abspath(sys.argv[1])
    SAMPLES, PICTURES = (pathlib.Path(argument).resolve() for argument in sys.argv[2:4])
    if not webdriver.is_there():
        print("there is no chromium with its driver; scripts/setup --checks installs it", file=sys.stderr)
        sys.exit(1 if os.environ.get("ORV_NEED_BROWSER") else 77)
    PICTURES.mkdir(parents=True, exist_ok=True)
    unittest.main(argv=sys.argv[:1] + sys.argv[4:])
