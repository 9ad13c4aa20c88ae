"""Opens pages of `ryx html` in headless Chromium and compares what they show with `ryx dump`.

Run it by hand: python3 PageTest.py PATH/TO/ryx [unittest options]
"""

import json
import math
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import time
import unittest
from urllib.parse import quote

SKIPPED = 77  # SKIP_RETURN_CODE in CMakeLists.txt
CHROMIUM, DRIVER = "/usr/bin/chromium", "/usr/bin/chromedriver"
FLAGS = ("--headless --no-sandbox --use-gl=angle --use-angle=swiftshader "
         "--enable-unsafe-swiftshader --disable-quic --no-first-run --disable-background-networking "
         "--disable-component-update --disable-sync --disable-dev-shm-usage --window-size=1280,800").split()
HOSTILE = '</script><script>window.evil=1</script><img src="http://a.invalid/x" onerror="evil=1">&amp;'

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.action_chains import ActionChains
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
except ImportError as error:
    print(f"Skipped: {error}. Install the Debian package python3-selenium to run this test.")
    sys.exit(SKIPPED)
for program, package in ((CHROMIUM, "chromium"), (DRIVER, "chromium-driver")):
    if not os.path.exists(program):
        print(f"Skipped: {program} is missing. Install the Debian package {package} to run this test.")
        sys.exit(SKIPPED)
if len(sys.argv) < 2:
    sys.exit(__doc__)
RYX = os.path.abspath(sys.argv.pop(1))
SHARED = os.environ.get("RYXMERGE_SHARED_MODELS")


def single(value):
    """The number as 32 bits."""
    return struct.unpack("f", struct.pack("f", value))[0]


class Pages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp(prefix="ryx-page-")
        cls.addClassCleanup(shutil.rmtree, cls.folder, ignore_errors=True)
        cls.ryx("sample", cls.folder)
        options = webdriver.ChromeOptions()
        options.binary_location = CHROMIUM
        for flag in (*FLAGS, f"--user-data-dir={cls.folder}/profile"):
            options.add_argument(flag)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        cls.browser = webdriver.Chrome(service=Service(DRIVER), options=options)
        cls.addClassCleanup(cls.browser.quit)

    @classmethod
    def ryx(cls, *arguments):
        result = subprocess.run([RYX, *arguments], capture_output=True, cwd=cls.folder, check=False)
        if result.returncode not in (0, 1):  # 1: the page lacks something, and says so
            raise AssertionError(f"ryx {arguments}: {result.stderr.decode()}")
        return result.stdout

    @classmethod
    def dump(cls, model, node, result):
        return json.loads(cls.ryx("dump", model, str(node), result, "--format", "json"))["values"]

    def tearDown(self):
        """No page may write to the console, fail, or ask a network."""
        self.assertEqual([], self.js("return ryx.errors"))
        self.assertEqual([], self.browser.get_log("browser"))
        for entry in self.browser.get_log("performance"):
            message = json.loads(entry["message"])["message"]
            if message["method"] == "Network.requestWillBeSent":
                self.assertRegex(message["params"]["request"]["url"], "^(file|data|blob|chrome):|^about:")
        for method in ("Emulation.clearDeviceMetricsOverride", "Emulation.setEmulatedMedia"):
            self.browser.execute_cdp_cmd(method, {})

    def js(self, script, *arguments):
        return self.browser.execute_script(script, *arguments)

    def write(self, model, *options, edit=None):
        """Writes a page; `edit` changes its manifest."""
        page = os.path.join(self.folder, "page.html")
        self.ryx("html", model, "-o", page, "--overwrite", *options)
        if edit:
            start, end = '<script type="application/json" id="manifest">', "</script>"
            with open(page, encoding="utf-8") as file:
                before, rest = file.read().split(start, 1)
            text, after = rest.split(end, 1)
            manifest = json.loads(text)
            edit(manifest)
            text = json.dumps(manifest).replace("<", "\\u003c")
            with open(page, "w", encoding="utf-8") as file:
                file.write(before + start + text + end + after)
        return page

    def open(self, page, has_view=True):
        self.browser.get("file://" + quote(page))
        if has_view:
            self.wait(lambda: self.js("return ryx.firstFrame !== null || ryx.errors.length > 0"))
        self.assertEqual([], self.js("return ryx.errors"))

    def wait(self, condition):
        end = time.monotonic() + 30
        while not condition():
            self.assertLess(time.monotonic(), end, "the page does not react")
            time.sleep(0.02)

    def state(self):
        """The state of the page when it has drawn what was chosen."""
        self.wait(lambda: self.js("return ryx.state().isReady"))
        return self.js("return ryx.state()")

    def choose(self, name, value):
        self.js("const s = document.getElementById(arguments[0]); s.value = arguments[1];"
                "s.dispatchEvent(new Event('change'))", name, value)

    def click(self, name, *arguments):
        """Clicks the place that a function of the page returns."""
        self.state()
        place = self.js(f"return ryx.{name}(...arguments)", *arguments)
        canvas = self.browser.find_element(By.ID, "canvas")
        x, y = place[0] - canvas.size["width"] / 2, place[1] - canvas.size["height"] / 2
        ActionChains(self.browser).move_to_element_with_offset(canvas, round(x), round(y)).click().perform()
        self.wait(lambda: (self.state()["picked"] or {}).get("nodePosition") is not None)
        return self.state()["picked"]

    def check_picked(self, model, picked, instance=True):
        """Compares the picked values and ids with those of the model."""
        node = picked["partNode"]
        suffix = f"\\x1E{picked['step']}" if instance else ""
        position = picked["nodePosition" if picked["placement"] == "point" else "elementPosition"]
        expected = self.dump(model, node, picked["result"] + suffix)[position]
        expected = expected if isinstance(expected, list) else [expected]
        resolutions = picked["resolutions"] or [0] * len(expected)
        for a, b, resolution in zip(expected, picked["components"], resolutions):
            self.assertLessEqual(abs(single(a) - b), 0.51 * resolution)
        if not picked["resolutions"] and picked["component"] != "magnitude":
            self.assertEqual(single(expected[picked["component"]]), single(float(picked["text"])))
        self.assertEqual(self.dump(model, node, "Node Ids")[picked["nodePosition"]], picked["node"])
        self.assertEqual(self.dump(model, node, "Element IDs")[picked["elementPosition"]], picked["element"])

    def test_values(self):
        """Values, ids and colours of all results and steps, exact and in display precision."""
        def drop_exact(manifest):
            for field in (field for result in manifest["results"] for field in result["fields"]):
                field["exact"] = None

        for edit, is_exact in ((None, True), (drop_exact, False)):
            self.open(self.write("plate.ryx", edit=edit))
            self.choose("view-name", "top")
            self.choose("edges", "none")
            for result, component, step in ((0, 0, 0), (0, 1, 1), (0, "magnitude", 1), (1, 0, 0), (1, 0, 1)):
                self.choose("result", result)
                self.choose("component", component)
                self.choose("step", step)
                picked = self.click("project", 0, 100 + 70 * step)
                self.wait(lambda: (self.state()["picked"] or {}).get("step") == f"LC{step + 1}")
                picked = self.state()["picked"]
                self.assertEqual((component, is_exact), (picked["component"], picked["isExact"]))
                self.assertEqual("display" not in self.text("picked").split("Part")[0], is_exact)
                self.check_picked("plate.ryx", picked)
                self.check_colour(picked)

    def text(self, name):
        return self.js("return document.getElementById(arguments[0]).innerText", name)

    def check_colour(self, picked):
        """Compares the pixel at a node with the scale of colours."""
        low, high = self.state()["range"]
        values = picked["components"]
        value = math.hypot(*values) if picked["component"] == "magnitude" else values[picked["component"]]
        pixel, scale = self.js("""
            const [value, low, high, node] = arguments;
            const read = (canvas, x, y) => {
              const copy = document.createElement("canvas");
              copy.width = canvas.width;
              copy.height = canvas.height;
              const context = copy.getContext("2d");
              context.drawImage(canvas, 0, 0);
              return [...context.getImageData(x, y, 1, 1).data];
            };
            ryx.draw();
            const place = ryx.project(0, node);
            const bar = document.getElementById("bar-colours");
            return [read(document.getElementById("canvas"), place[0], place[1]),
                    read(bar, 0, Math.round(255 * (1 - (value - low) / (high - low))))];
            """, value, low, high, picked["nodePosition"])
        self.assertEqual(255, pixel[3])
        self.assertLess(max(abs(a - b) for a, b in zip(pixel, scale)), 24, (pixel, scale))

    def test_parts_and_steps(self):
        self.open(self.write("assembly.ryx"))
        every = self.state()["visibleParts"]
        boxes = self.browser.find_elements(By.CSS_SELECTOR, "#tree input")
        names = [box.find_element(By.XPATH, "../span[@class='name']").text for box in boxes]
        post = names.index("Post 1")
        self.js("arguments[0].click()", boxes[post])
        self.assertEqual([part for part in every if part != "Post 1"], self.state()["visibleParts"])
        self.assertEqual([True, False, False], [self.js("return arguments[0].indeterminate", boxes[i])
                                                for i in (0, post, post + 1)])
        self.js("arguments[0].click()", boxes[0])
        self.assertEqual(every, self.state()["visibleParts"])
        part = self.click("middle", len(every) - 1, 0)["part"]
        for action, left in (("only-picked", [part]), ("hide-picked", [])):
            self.js("document.getElementById(arguments[0]).click()", action)
            self.assertEqual(left, self.state()["visibleParts"])

        self.open(self.write("plate.ryx", "--result", "Stress"))
        whole = self.state()["range"]
        self.choose("range-kind", "step")
        ranges = []
        for control in ("next", "previous"):
            self.js("document.getElementById(arguments[0]).click()", control)
            ranges.append(self.state()["range"])
        self.assertNotEqual(*ranges)
        self.assertEqual([min(r[0] for r in ranges), max(r[1] for r in ranges)], whole)
        self.choose("range-low", "2")
        self.assertEqual([2, ranges[1][1]], self.state()["range"])
        low = self.browser.find_element(By.ID, "range-low")
        low.send_keys("7")
        self.js("document.getElementById('next').click()")
        self.assertEqual("27", low.get_attribute("value"))
        self.js("document.getElementById('previous').click(); document.activeElement.blur()")
        self.state()
        self.js("document.getElementById('play').click()")
        self.wait(lambda: self.state()["step"] == 1)
        self.js("document.getElementById('play').click()")
        self.assertFalse(self.state()["isPlaying"])

    def test_keyboard(self):
        self.open(self.write("plate.ryx"))
        body = self.browser.find_element(By.TAG_NAME, "body")
        for _ in range(30):
            body.send_keys(Keys.TAB)
            if self.js("return document.activeElement.id") == "canvas":
                break
        canvas = self.browser.switch_to.active_element
        self.assertEqual("canvas", canvas.get_attribute("id"))
        start = self.state()
        self.assertEqual("block", self.js("return getComputedStyle(document.getElementById('crosshair')).display"))
        for keys, field in ((Keys.ARROW_LEFT, "right"), (Keys.ARROW_UP, "up"),
                            (Keys.SHIFT + Keys.ARROW_LEFT, "target"), ("+", "halfHeight")):
            before = self.state()["camera"]
            canvas.send_keys(keys)
            self.assertNotEqual(before[field], self.state()["camera"][field], field)
        canvas.send_keys("0")
        self.assertEqual(start["camera"], self.state()["camera"])
        canvas.send_keys("e", ".")
        self.wait(lambda: self.state()["step"] == 1)
        self.assertNotEqual(start["edges"], self.state()["edges"])
        canvas.send_keys(Keys.SHIFT + Keys.ARROW_LEFT * 5, Keys.ENTER)  # away from the hole
        self.wait(lambda: self.state()["picked"])
        self.check_picked("plate.ryx", self.state()["picked"])

    def test_hostile_names(self):
        def rename(manifest):
            manifest["notes"] = [HOSTILE]
            for item in (*manifest["nodes"], *manifest["parts"], *manifest["results"], *manifest["steps"]):
                item["name"] = HOSTILE
            manifest["results"][0]["unit"] = manifest["results"][0]["components"][0] = HOSTILE
            manifest["tables"] = [{"title": HOSTILE, "columns": [HOSTILE], "rows": [[HOSTILE]]}]
            manifest["diff"] = {"a": HOSTILE, "b": HOSTILE, "greatest": []}

        hostile_file = "<!--<script><img src=x onerror=evil=1>&quot;.ryx"
        shutil.copy(os.path.join(self.folder, "plate.ryx"), os.path.join(self.folder, hostile_file))
        for edit in (None, rename):
            self.open(self.write(hostile_file, edit=edit))
            self.assertEqual(hostile_file, self.browser.title)
            self.assertEqual(hostile_file, self.text("title"))
            self.click("middle", 0, 100)
            self.assertIsNone(self.js("return window.evil ?? null"))
            self.assertEqual(0, self.js("return document.querySelectorAll('img').length"))
            self.assertEqual(bool(edit), HOSTILE in self.text("note-list"))
            self.assertEqual(bool(edit), HOSTILE in self.text("picked"))

    def test_layout(self):
        """No horizontal scrolling on phones; light and dark; names for all controls."""
        page = self.write("assembly.ryx")
        colours = {}
        for width, scheme in ((320, "light"), (360, "dark"), (1280, "light")):
            self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
                "width": width, "height": 700, "deviceScaleFactor": 1, "mobile": width < 500})
            self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {
                "features": [{"name": "prefers-color-scheme", "value": scheme}]})
            self.open(page)
            self.assertLessEqual(self.js("return document.documentElement.scrollWidth"), width)
            self.assertGreaterEqual(self.js("return document.getElementById('canvas').clientHeight"), 250)
            colours[scheme] = self.js("return getComputedStyle(document.body).backgroundColor")
        self.assertNotEqual(colours["light"], colours["dark"])
        self.choose("theme", "dark")
        self.assertEqual(colours["dark"], self.js("return getComputedStyle(document.body).backgroundColor"))
        nameless = self.js("""
            return [...document.querySelectorAll("button, input, select, canvas:not([aria-hidden] *)")].filter(
                e => !(e.ariaLabel || e.labels?.[0]?.innerText.trim() || e.innerText?.trim())
            ).map(e => e.outerHTML)""")
        self.assertEqual([], nameless)

    def test_odd_models(self):
        """Empty models, boxes that cannot be drawn as they are, and meshes of points alone."""
        def with_box(box):
            def edit(manifest):
                for mesh in manifest["parts"][0]["meshes"]:
                    mesh["box"] = box
            return edit

        def points_only(manifest):
            for mesh in manifest["parts"][0]["meshes"]:
                mesh["triangles"] = mesh["lines"] = None
                mesh["numTriangles"] = 0

        def without_ids(manifest):
            for mesh in manifest["parts"][0]["meshes"]:
                mesh.update(hasPointIds=False, hasCellIds=False, pointIds=None, cellIds=None)

        def deep(manifest):
            manifest["nodes"] = [{"id": i, "parent": i - 1, "name": "", "kind": "group"} for i in range(20000)]

        def empty(manifest):
            manifest.update(parts=[], results=[], nodes=[], steps=[])

        for edit in (with_box([[0, 0, 0], [0, 0, 0]]), with_box([[-1e30] * 3, [1e30] * 3]),
                     with_box([[1e308] * 3, [1.7e308] * 3]), with_box([[None] * 3, [None] * 3]), points_only, deep):
            self.open(self.write("plate.ryx", edit=edit))
            for key in ("f", "+", Keys.ENTER, Keys.ARROW_LEFT):
                self.browser.find_element(By.ID, "canvas").send_keys(key)
            camera = self.state()["camera"]
            self.assertTrue(all(isinstance(x, (int, float)) for x in (*camera["target"], camera["halfHeight"])))
        self.open(self.write("plate.ryx", edit=without_ids))
        picked = self.click("middle", 0, 100)
        self.assertEqual((None, None), (picked["node"], picked["element"]))
        self.assertEqual(2, self.text("picked").count("no id (position"))
        self.js("const s = document.getElementById('result');"  # the second before the first is drawn
                "for (const v of [0, '']) { s.value = v; s.dispatchEvent(new Event('change')); }")
        self.assertIsNone(self.state()["result"])
        self.open(self.write("plate.ryx", edit=empty), has_view=False)
        self.assertIn("no geometry", self.text("note-list"))
        self.assertIn("thickness", self.text("documents"))

    def test_webgl_missing_or_lost(self):
        page = self.write("plate.ryx")
        self.open(page)
        script = "window.lost = document.getElementById('canvas').getContext('webgl2').getExtension('WEBGL_lose_context');"
        self.js(script + "lost.loseContext()")
        self.wait(lambda: "context was lost" in self.text("message"))
        self.js("lost.restoreContext()")
        self.wait(lambda: self.text("message") == "")
        self.choose("view-name", "top")
        self.choose("edges", "none")
        self.check_colour(self.click("project", 0, 100))
        identifier = self.browser.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {
            "source": "HTMLCanvasElement.prototype.getContext = () => null"})["identifier"]
        try:
            self.open(page, has_view=False)
            self.wait(lambda: "WebGL2" in self.text("message"))
            self.assertIn("thickness", self.text("documents"))
        finally:
            self.browser.execute_cdp_cmd("Page.removeScriptToEvaluateOnNewDocument", {"identifier": identifier})

    def test_differences(self):
        page = os.path.join(self.folder, "difference.html")
        self.ryx("sample", "solids", "--size", "6", "--parts", "2", "--steps", "2")
        self.ryx("html", "--diff", "solids/run1.ryx", "solids/run2.ryx", "-o", page)
        self.open(page)
        rows = self.js("return JSON.parse(document.getElementById('manifest').textContent).diff.greatest")
        buttons = self.browser.find_elements(By.CSS_SELECTOR, "#documents td button")
        self.assertEqual(len([row for row in rows if row["index"] is not None]), len(buttons))
        boxes = "[...document.querySelectorAll('#tree .leaf input')]"
        self.js(f"{boxes}.forEach(box => box.click()); arguments[0].click()", buttons[-1])
        self.wait(lambda: (self.state()["picked"] or {}).get("text"))
        self.assertEqual(1, self.js(f"return {boxes}.filter(box => box.checked).length"))
        picked, row = self.state()["picked"], rows[-1]
        self.assertEqual([picked["part"]], self.state()["visibleParts"])
        value = math.hypot(*picked["components"])
        self.assertAlmostEqual(abs(row["value"]), value, delta=1e-4 * value)

    @unittest.skipUnless(SHARED, "RYXMERGE_SHARED_MODELS is not set")
    def test_shared_models(self):
        """Real models are drawn; the values at a click are those of the file."""
        for name, options in (("motorBike", ()), ("bracket", ()), ("mug_run10", ()), ("biplane", ())):
            model = os.path.join(SHARED, "real", f"{name}.ryx")
            self.open(self.write(model, *options))
            self.assertLess(self.js("return ryx.firstFrame"), 15000)  # a busy machine included
            self.click("middle", 0, 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
