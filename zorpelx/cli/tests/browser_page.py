# SPDX-License-Identifier: MIT
"""The page of report in Chromium: no complaint, the figures of the JSON answer, no overflow at two
widths, light and dark, names and order of what the keyboard reaches, colours that stand apart.

    browser_page.py [--pictures FOLDER]    keep the screenshots there

Ends with 77 if chromium, chromedriver or python3-selenium are not installed.
"""

import base64
import json
import pathlib
import re
import shutil
import sys
import tempfile
import unittest

from calls import Case, random_hypergraph

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.options import Options
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
except ImportError:
    webdriver = None

CHROMIUM, DRIVER = shutil.which("chromium"), shutil.which("chromedriver")
FLAGS = (
    "--headless --no-sandbox --disable-gpu --disable-quic --no-first-run "
    "--disable-background-networking --disable-component-update --disable-sync"
).split()
WIDTHS = (375, 1280)
KEPT = None


def start_browser(folder):
    options = Options()
    options.binary_location = CHROMIUM
    for flag in (*FLAGS, f"--user-data-dir={folder}"):
        options.add_argument(flag)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service(DRIVER), options=options)


def channels(colour):
    numbers = [int(word) for word in re.findall(r"\d+", colour)[:3]]
    return [n / 3294.6 if n <= 10 else ((n / 255 + 0.055) / 1.055) ** 2.4 for n in numbers]


def luminance(colour):
    return sum(part * c for part, c in zip((0.2126, 0.7152, 0.0722), channels(colour)))


def contrast(one, other):
    high, low = sorted((luminance(one), luminance(other)), reverse=True)
    return (high + 0.05) / (low + 0.05)


# How colours are seen with each kind of colour blindness, in linear light: Machado, Oliveira and
# Fernandes, A physiologically-based model for simulation of color vision deficiency, IEEE TVCG
# 15(6), 2009, severity 1.
SIGHTS = {
    "usual": ((1, 0, 0), (0, 1, 0), (0, 0, 1)),
    "no red": (
        (0.152286, 1.052583, -0.204868), (0.114503, 0.786281, 0.099216),
        (-0.003882, -0.048116, 1.051998),
    ),
    "no green": (
        (0.367322, 0.860646, -0.227968), (0.280085, 0.672501, 0.047413),
        (-0.011820, 0.042940, 0.968881),
    ),
    "no blue": (
        (1.255528, -0.076749, -0.178779), (-0.078411, 0.930809, 0.147602),
        (0.004733, 0.691367, 0.303900),
    ),
}
XYZ = ((0.4124564, 0.3575761, 0.1804375), (0.2126729, 0.7151522, 0.0721750),
       (0.0193339, 0.1191920, 0.9503041))


def times(matrix, vector):
    return [sum(a * b for a, b in zip(row, vector)) for row in matrix]


def lab(colour, sight):
    seen = [min(max(c, 0), 1) for c in times(SIGHTS[sight], channels(colour))]
    x, y, z = (
        c ** (1 / 3) if c > 0.008856 else 7.787 * c + 16 / 116
        for c in (n / white for n, white in zip(times(XYZ, seen), (0.95047, 1, 1.08883)))
    )
    return 116 * y - 16, 500 * (x - y), 200 * (y - z)


def distance(one, other, sight):
    pairs = zip(lab(one, sight), lab(other, sight))
    return sum((a - b) ** 2 for a, b in pairs) ** 0.5


class Page(Case):
    @classmethod
    def setUpClass(cls):
        cls.profile = tempfile.mkdtemp(prefix="chromium-")
        cls.addClassCleanup(shutil.rmtree, cls.profile, ignore_errors=True)
        cls.browser = start_browser(cls.profile)
        cls.addClassCleanup(cls.browser.quit)

    def setUp(self):
        super().setUp()
        self.file("g.hgr", random_hypergraph(300, 360, 3))
        self.run_ok("partition", "g.hgr", "-k", 8, "--json", "run.json", "-o", "a.part.8", "-q")
        self.run_ok("partition", "g.hgr", "-k", 8, "--seed", 5, "-o", "b.part.8", "-q")
        words = ("g.hgr", "a.part.8", "b.part.8", "--history", "run.json")
        self.run_ok("report", *words, "-o", "g.html", "--json", "g.json")
        self.show("light", WIDTHS[1])

    def show(self, scheme, width):
        feature = {"name": "prefers-color-scheme", "value": scheme}
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [feature]})
        size = {"width": width, "height": 900, "deviceScaleFactor": 1, "mobile": width < 600}
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", size)
        self.browser.get((self.folder / "g.html").as_uri())

    def run_script(self, script, *arguments):
        return self.browser.execute_script("return " + script, *arguments)

    def keep(self, name):
        """The whole page as it is seen; returns the picture's bytes."""
        height = self.run_script("document.documentElement.scrollHeight")
        width = self.run_script("document.documentElement.clientWidth")
        clip = {"x": 0, "y": 0, "width": width, "height": height, "scale": 1}
        shot = {"captureBeyondViewport": True, "clip": clip}
        answer = self.browser.execute_cdp_cmd("Page.captureScreenshot", shot)
        picture = base64.b64decode(answer["data"])
        if KEPT is not None:
            (KEPT / f"{name}.png").write_bytes(picture)
        return picture

    def test_the_browser_has_nothing_to_complain_about(self):
        self.assertEqual(self.browser.get_log("browser"), [])
        self.assertIn("g.hgr in 8 parts", self.browser.title)
        requests = self.run_script("performance.getEntriesByType('resource').length")
        self.assertEqual(requests, 0)

    def test_the_figures_shown_are_those_of_the_answer(self):
        answer = json.loads(self.text("g.json"))
        shown = self.run_script(
            "[...document.querySelectorAll('[data-figure]')]"
            ".map(one => [one.dataset.figure, one.textContent])"
        )
        self.assertGreater(len(shown), 100)
        for pointer, text in shown:
            value = answer
            for key in pointer.split("/")[1:]:
                value = value[int(key)] if isinstance(value, list) else value[key]
            number = text.replace(",", "").removesuffix(" %")
            decimals = len(number.partition(".")[2])
            wanted = str(value) if isinstance(value, int) else f"{value:.{decimals}f}"
            self.assertEqual(number, wanted, pointer)

    def test_no_width_and_no_scheme_makes_the_page_overflow(self):
        seen = set()
        for scheme in ("light", "dark"):
            for width in WIDTHS:
                self.show(scheme, width)
                inner = self.run_script("document.documentElement.clientWidth")
                whole = self.run_script("document.documentElement.scrollWidth")
                self.assertLessEqual(whole, inner, (scheme, width))
                wide = self.run_script(
                    "[...document.querySelectorAll('body *')].filter(one => "
                    "!one.closest('.scroll') && !one.closest('.skip') && "
                    "one.getBoundingClientRect().right > innerWidth + 1).map(one => one.tagName)"
                )
                self.assertEqual(wide, [], (scheme, width))
                seen.add(self.keep(f"{scheme}-{width}"))
                self.assertEqual(self.browser.get_log("browser"), [])
        self.assertEqual(len(seen), 4)

    def test_text_can_be_read_in_both_schemes(self):
        for scheme in ("light", "dark"):
            self.show(scheme, WIDTHS[1])
            ground = self.run_script("getComputedStyle(document.body).backgroundColor")
            for selector in ("h1", ".lead", "dt", "dd", "td", "caption", "figcaption", "nav a",
                             "summary", "footer"):
                colour = self.run_script(
                    "getComputedStyle(document.querySelector(arguments[0])).color", selector
                )
                self.assertGreaterEqual(contrast(colour, ground), 4.5, (scheme, selector))
            for selector in ("svg .ink", "svg .dim"):
                colour = self.run_script(
                    "getComputedStyle(document.querySelector(arguments[0])).fill", selector
                )
                self.assertGreaterEqual(contrast(colour, ground), 4.5, (scheme, selector))

    def test_colours_of_parts_stand_apart_for_everybody(self):
        for scheme in ("light", "dark"):
            self.show(scheme, WIDTHS[1])
            ground = self.run_script("getComputedStyle(document.body).backgroundColor")
            colours = self.run_script(
                "[...Array(8).keys()].map(i => getComputedStyle("
                "document.querySelector('#sizes .p' + i)).fill)"
            )
            for i, one in enumerate(colours):
                self.assertGreaterEqual(contrast(one, ground), 2.9, (scheme, one))
                for other in colours[:i]:
                    for sight in SIGHTS:
                        self.assertGreater(distance(one, other, sight), 24, (scheme, sight, i))

    def test_the_keyboard_reaches_everything_in_order(self):
        body = self.browser.find_element(By.TAG_NAME, "body")
        wanted = self.run_script(
            "[...document.querySelectorAll('a[href],summary,[tabindex=\"0\"]')]"
            ".filter(one => one.checkVisibility()).length"
        )
        reached, places = [], []
        for _ in range(wanted):
            self.browser.switch_to.active_element.send_keys(Keys.TAB)
            reached.append(self.run_script(
                "(one => [one.tagName, one.getAttribute('aria-label') || "
                "(one.getAttribute('aria-labelledby') ? document.getElementById("
                "one.getAttribute('aria-labelledby')).textContent : one.textContent), "
                "getComputedStyle(one).outlineStyle])(document.activeElement)"
            ))
            places.append(self.run_script(
                "[...document.querySelectorAll('*')].indexOf(document.activeElement)"
            ))
        self.assertEqual(reached[0][:2], ["A", "Skip to the content"])
        self.assertEqual(places, sorted(set(places)))  # once each, as the page goes
        for tag, name, outline in reached:
            self.assertIn(tag, ("A", "SUMMARY", "DIV"))
            self.assertTrue(name.strip())
            self.assertNotEqual(outline, "none", name)
        self.assertTrue(body.is_displayed())

    def test_a_reader_of_screens_finds_headings_landmarks_and_names(self):
        tree = self.browser.execute_cdp_cmd("Accessibility.getFullAXTree", {})["nodes"]
        nodes = [
            (node["role"]["value"], node.get("name", {}).get("value", ""))
            for node in tree
            if not node.get("ignored") and "role" in node
        ]
        roles = [role for role, _ in nodes]
        for role in ("banner", "navigation", "main", "contentinfo"):
            self.assertEqual(roles.count(role), 1, role)
        headings = [name for role, name in nodes if role == "heading"]
        self.assertEqual(headings[:2], ["g.hgr in 8 parts", "Summary"])
        self.assertIn("Partitions compared", headings)
        for role, name in nodes:
            if role in ("image", "img", "region", "table", "link", "heading", "navigation"):
                self.assertTrue(name, role)
        pictures = [name for role, name in nodes if role in ("image", "img")]
        self.assertEqual(len(pictures), 7)
        self.assertEqual(len(set(pictures)), 7)
        self.assertEqual(self.run_script("document.documentElement.lang"), "en")

    def test_folded_tables_open_without_scripts(self):
        summary = self.browser.find_element(By.CSS_SELECTOR, "#between summary")
        summary.send_keys(Keys.ENTER)
        table = self.browser.find_element(By.CSS_SELECTOR, "#between table")
        self.assertTrue(table.is_displayed())

    def test_a_script_in_a_name_does_not_run(self):
        name = "<img src=x onerror=document.title='owned'><script>document.title='owned'</script>"
        self.file("n.csv", f'hyperedge,vertex\n"{name}","{name}"\n"{name}",other\n')
        self.file("n.part.2", "0\n1\n")
        self.run_ok("report", "n.csv", "n.part.2", "-o", "g.html")
        self.show("light", WIDTHS[1])
        self.assertIn("n.csv", self.browser.title)
        self.assertEqual(self.browser.get_log("browser"), [])
        self.assertIn("onerror=", self.browser.find_element(By.ID, "costly").text)


if __name__ == "__main__":
    if webdriver is None or CHROMIUM is None or DRIVER is None:
        print("chromium, chromium-driver and python3-selenium are needed", file=sys.stderr)
        sys.exit(77)
    if sys.argv[1:2] == ["--pictures"]:
        KEPT = pathlib.Path(sys.argv[2])
        KEPT.mkdir(parents=True, exist_ok=True)
        del sys.argv[1:3]
    unittest.main(verbosity=2)
