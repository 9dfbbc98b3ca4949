#!/usr/bin/python3
"""The demo page in Chromium: the library's bytes, answers to browsers and files that do not do, changes, and its looks.

Usage: browser_test.py PAGE EXPECTED DIGEST_PROGRAM DIGEST_SCRIPT
  PAGE            the folder of the page
  EXPECTED        the folder that expected_streams wrote
  DIGEST_PROGRAM  the program of bit_exact/, built for this machine; DIGEST_SCRIPT, the same for browsers
With SONIVEX_SCREENSHOTS set to a folder, the pictures of the page go there.
Exit code 77: Chromium or its driver is not installed.
"""

import base64
import functools
import http.server
import math
import os
import random
import shutil
import struct
import subprocess
import sys
import tempfile
import threading
import time
import unittest

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
except ImportError:
    print("selenium is not installed")
    sys.exit(77)

DRIVER = shutil.which("chromedriver")
if DRIVER is None or shutil.which("chromium") is None:
    print("Chromium or its driver is not installed")
    sys.exit(77)

PAGE, EXPECTED, DIGEST_PROGRAM, DIGEST_SCRIPT = (os.path.abspath(path) for path in sys.argv[1:5])
RATE_HZ = 48000
WAIT_S = 20


class QuietHandler(http.server.SimpleHTTPRequestHandler):
    """Serves a tree with the page, the expected streams and the digests' script."""

    def translate_path(self, path):
        name = path.split("?")[0].lstrip("/")
        roots = {"page": PAGE, "expected": EXPECTED}
        head, _, rest = name.partition("/")
        if head in roots:
            return os.path.join(roots[head], os.path.basename(rest))
        return DIGEST_SCRIPT if name == "digest.js" else os.devnull

    def do_GET(self):
        if self.path == "/blank":
            self.send_response(200)
            self.send_header("Content-Type", "text/html")
            self.end_headers()
            self.wfile.write(b"<!doctype html><title>blank</title>")
            return
        super().do_GET()

    def log_message(self, *_):
        pass


def wave_file(path, planes, rate_hz=RATE_HZ):
    """Writes planes of 16-bit samples as a WAV file."""
    channels, frames = len(planes), len(planes[0])
    data = struct.pack(f"<{channels * frames}h", *(planes[c][i] for i in range(frames) for c in range(channels)))
    form = struct.pack("<HHIIHH", 1, channels, rate_hz, rate_hz * channels * 2, channels * 2, 16)
    with open(path, "wb") as file:
        file.write(b"RIFF" + struct.pack("<I", 36 + len(data)) + b"WAVEfmt " + struct.pack("<I", 16) + form)
        file.write(b"data" + struct.pack("<I", len(data)) + data)


def tone(seconds, amplitude=8000, frequency_hz=440):
    return [round(amplitude * math.sin(2 * math.pi * frequency_hz * i / RATE_HZ)) for i in range(int(seconds * RATE_HZ))]


# Renders a case offline in the worklet and compares it with the library's output.
COMPARE = """
const [base, name, channels, choice, variant, done] = arguments;
(async () => {
    const read = async (kind) => new Int16Array(await (await fetch(`${base}/expected/${name}.${kind}.s16`)).arrayBuffer());
    const [input, wanted] = [await read("in"), await read("out")];
    const frames = input.length / channels;
    const context = new OfflineAudioContext(2, frames + 1024, 48000);
    const node = await Sonivex.createNode(context, {channels, choice, variant});
    const buffer = context.createBuffer(channels, frames, 48000);
    for (let c = 0; c < channels; ++c) {
        buffer.copyToChannel(Float32Array.from({length: frames}, (_, i) => input[i * channels + c] / 32768), c);
    }
    const source = new AudioBufferSourceNode(context, {buffer});
    source.connect(node).connect(context.destination);
    source.start();
    const rendered = await context.startRendering();
    const planes = [0, 1].map((c) => rendered.getChannelData(c));
    let differing = 0, largest = 0;
    for (let i = 0; i < wanted.length; ++i) {
        if (planes[i % 2][node.latencyFrames + (i >> 1)] * 32768 !== wanted[i]) ++differing;
        largest = Math.max(largest, Math.abs(wanted[i]));
    }
    return {differing, largest};
})().then(done, (error) => done({error: String(error)}));
"""

# Changes the sound in mid-stream and returns the largest fourth difference afterwards.
CHANGE = """
const [from, to, done] = arguments;
(async () => {
    const context = new OfflineAudioContext(2, 96000, 48000);
    const node = await Sonivex.createNode(context, {channels: 2, choice: from});
    const tone = Float32Array.from({length: 96000}, (_, i) => 0.25 * Math.sin(2 * Math.PI * 100 * i / 48000));
    const buffer = context.createBuffer(2, 96000, 48000);
    buffer.copyToChannel(tone, 0);
    buffer.copyToChannel(tone, 1);
    const source = new AudioBufferSourceNode(context, {buffer});
    source.connect(node).connect(context.destination);
    source.start();
    context.suspend(1).then(async () => {
        node.choose(to);
        await new Promise((resolve) => setTimeout(resolve, 200));
        context.resume();
    });
    const x = (await context.startRendering()).getChannelData(0);
    let rough = 0, level = 0, before = 0;
    for (let i = 24000; i < 96000; ++i) {
        rough = Math.max(rough, Math.abs(x[i] - 4 * x[i - 1] + 6 * x[i - 2] - 4 * x[i - 3] + x[i - 4]));
        if (i < 48000) before = Math.max(before, Math.abs(x[i]));
        if (i >= 90000) level = Math.max(level, Math.abs(x[i]));
    }
    return {rough, level, before};
})().then(done, (error) => done({error: String(error)}));
"""


# Drops a file on the page, as a user's mouse would.
DROP = """
const [name, text] = arguments;
const dataTransfer = new DataTransfer();
dataTransfer.items.add(new File([Uint8Array.from(atob(text), (letter) => letter.charCodeAt(0))], name));
const target = document.getElementById("drop");
return ["dragover", "drop"].map((kind) => {
    target.dispatchEvent(new DragEvent(kind, {dataTransfer, bubbles: true, cancelable: true}));
    return target.classList.contains("over");
});
"""


class Browser(unittest.TestCase):
    """One browser for the tests of a class, and a server on the loopback address."""

    options = ("--autoplay-policy=no-user-gesture-required",)

    @classmethod
    def setUpClass(cls):
        cls.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), QuietHandler)
        threading.Thread(target=cls.server.serve_forever, daemon=True).start()
        cls.base = f"http://127.0.0.1:{cls.server.server_port}"
        options = webdriver.ChromeOptions()
        for option in ("--headless=new", "--no-sandbox", "--disable-gpu", "--window-size=1000,1050", *cls.options):
            options.add_argument(option)
        cls.driver = webdriver.Chrome(service=Service(DRIVER), options=options)
        cls.driver.set_script_timeout(120)

    @classmethod
    def tearDownClass(cls):
        cls.driver.quit()
        cls.server.shutdown()
        cls.server.server_close()

    def setUp(self):
        self.scripts = []
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def tearDown(self):
        for script in self.scripts:
            self.driver.execute_cdp_cmd("Page.removeScriptToEvaluateOnNewDocument", script)
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": []})

    def before_page(self, source):
        """Runs a script before those of the next page."""
        self.scripts.append(self.driver.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": source}))

    def open(self, address=None):
        self.driver.get(address or f"{self.base}/page/index.html")

    def find(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def text(self, selector):
        return self.find(selector).text

    def until(self, what, holds):
        end = time.monotonic() + WAIT_S
        while not holds():
            self.assertLess(time.monotonic(), end, f"{what}; the page says: {self.text('#status')}")
            time.sleep(0.05)

    def give(self, name, content):
        path = os.path.join(self.folder.name, name)
        if isinstance(content, bytes):
            with open(path, "wb") as file:
                file.write(content)
        else:
            wave_file(path, content)
        self.find("#file").send_keys(path)

    def until_playing(self):
        self.until("nothing plays", lambda: self.text("#play") == "Pause")
        self.until("no sound comes out", lambda: "dB" in self.text("#output-meters"))

    def call(self, script, *arguments):
        result = self.driver.execute_async_script(script, *arguments)
        self.assertNotIn("error", result)
        return result


class PageBytes(Browser):
    def test_the_worklet_puts_out_the_bytes_of_the_library(self):
        self.open()
        cases = self.driver.execute_async_script(
            "fetch(arguments[0]).then((answer) => answer.json()).then(arguments[1])", f"{self.base}/expected/cases.json")
        self.assertGreaterEqual(len(cases), 19)
        for i, case in enumerate(cases):
            for variant in ("simd", "scalar") if i % 4 == 0 else ("simd",):
                with self.subTest(case["name"], variant=variant):
                    result = self.call(COMPARE, self.base, case["name"], case["channels"], case["choice"], variant)
                    self.assertGreater(result["largest"], 1000)
                    self.assertEqual(result["differing"], 0)

    def test_the_digests_are_those_of_the_native_build(self):
        lines = subprocess.run([DIGEST_PROGRAM], capture_output=True, text=True, check=True).stdout.splitlines()
        wanted = [line for line in lines if not line.startswith("dialogue ")]
        self.driver.get(f"{self.base}/blank")
        self.driver.execute_script(
            """globalThis.lines = [];
            globalThis.Module = {print: (line) => lines.push(line)};
            const script = document.createElement("script");
            script.src = arguments[0];
            document.head.append(script);""",
            f"{self.base}/digest.js")
        end = time.monotonic() + 60
        while (got := self.driver.execute_script("return lines"))[-1:] != wanted[-1:] and time.monotonic() < end:
            time.sleep(0.2)
        self.assertGreater(len(wanted), 70)
        self.assertEqual(got, wanted)


class PageChanges(Browser):
    def test_no_change_clicks(self):
        self.open()
        sounds = [{"effect": "original"}, {"effect": "surround"}, {"effect": "surround", "type": "MegaBass", "mode": 3}]
        for choice, wanted in ((sounds[0], sounds[1]), (sounds[1], sounds[2]), (sounds[2], sounds[0])):
            with self.subTest(f"{choice} to {wanted}"):
                result = self.call(CHANGE, choice, wanted)
                self.assertLess(result["rough"], 32 / 32768)
                self.assertGreater(abs(result["level"] / result["before"] - 1), 0.01, "the change made no difference")

    def test_the_controls_change_the_sound_that_plays(self):
        self.open()
        self.find("[data-example='8']").click()
        self.until_playing()
        self.driver.execute_script(
            "new MutationObserver(() => document.documentElement.dataset.changing === 'true' && ++globalThis.changes)"
            ".observe(document.documentElement, {attributes: true}); globalThis.changes = 0")
        controls = "[value=MegaBass]", "[name=mode][value='3']", "[name=limiter]", "[value=original]", "[value=normalizer]"
        for selector in controls:
            self.driver.execute_script("globalThis.changes = 0")
            self.find(selector).click()
            self.until(f"{selector} begins no change", lambda: self.driver.execute_script("return changes > 0"))
            self.until(f"{selector} ends no change",
                       lambda: self.driver.execute_script("return document.documentElement.dataset.changing") == "false")

    def test_the_key_a_compares_with_the_original(self):
        self.open()
        chosen = lambda: self.driver.execute_script("return document.querySelector('[name=effect]:checked').value")
        for wanted in ("original", "surround"):
            self.find("body").send_keys("a")
            self.assertEqual(chosen(), wanted)

    def test_a_key_that_is_held_compares_once(self):
        self.open()
        self.driver.execute_script("""for (const repeat of [false, true, true, true]) {
            document.body.dispatchEvent(new KeyboardEvent("keydown", {key: "a", repeat, bubbles: true})); }""")
        self.assertTrue(self.find("[value=original]").is_selected())

    def test_the_rooms_are_there_for_megabass_alone(self):
        self.open()
        is_enabled = lambda: self.find("[name=mode]").is_enabled()
        self.assertFalse(is_enabled())
        self.find("[value=MegaBass]").click()
        self.assertTrue(is_enabled())
        self.find("[value=normalizer]").click()
        self.assertFalse(is_enabled())

    def test_playback_pauses_and_goes_on_from_a_chosen_position(self):
        self.open()
        self.find("[data-example='2']").click()
        self.until_playing()
        self.find("#play").click()
        self.assertEqual(self.text("#play"), "Play")
        self.driver.execute_script(
            "const p = document.getElementById('position'); p.value = 2.4; p.dispatchEvent(new Event('change'))")
        self.until("the position stays", lambda: self.text("#time").startswith("0:02"))
        self.find("#play").click()
        self.until("the sound does not end", lambda: "at its end" in self.text("#status"))
        self.assertEqual(self.text("#play"), "Play")


class PageAnswers(Browser):
    def test_files_of_every_layout_play(self):
        for channels, layout in ((1, "mono"), (2, "stereo"), (6, "5.1"), (8, "7.1")):
            with self.subTest(layout):
                self.open()
                amplitudes = [16000 / 1.5 ** channel for channel in range(channels)]
                self.give(f"{channels}.wav", [tone(4, amplitude) for amplitude in amplitudes])
                self.until_playing()
                wanted_db = [20 * math.log10(amplitude / 32768) for amplitude in amplitudes]
                self.until(f"the meters do not show {wanted_db}", lambda: self.are_near(self.levels_db(), wanted_db))
                self.assertIn(f"{channels}.wav, {layout}", self.text("#status"))
                self.assertEqual(len(self.driver.find_elements(By.CSS_SELECTOR, "#input-meters .meter")), channels)

    def levels_db(self):
        """What the input's meters show, channel by channel."""
        texts = [element.text for element in self.driver.find_elements(By.CSS_SELECTOR, "#input-meters .level")]
        return [float(text.split()[0]) if text.endswith("dB") else -60.0 for text in texts]

    @staticmethod
    def are_near(levels_db, wanted_db):
        return len(levels_db) == len(wanted_db) and all(abs(a - b) < 0.3 for a, b in zip(levels_db, wanted_db))

    def test_a_file_that_is_no_sound_is_named(self):
        self.open()
        self.give("noise.mp3", random.Random(1).randbytes(5000))
        self.until("no answer", lambda: "cannot decode noise.mp3" in self.text("#status"))
        self.assertFalse(self.find("#play").is_enabled())
        self.give("empty.wav", b"")
        self.until("no answer", lambda: "cannot decode empty.wav" in self.text("#status"))
        self.give("good.wav", [tone(30)] * 2)
        self.until_playing()
        self.give("bad.wav", b"RIFF")
        self.until("no answer", lambda: "cannot decode bad.wav" in self.text("#status"))
        self.assertEqual(self.text("#play"), "Pause", "what played before goes on")

    def test_a_file_that_is_dropped_plays(self):
        self.open()
        path = os.path.join(self.folder.name, "tone.wav")
        wave_file(path, [tone(4)] * 2)
        with open(path, "rb") as file:
            content = base64.b64encode(file.read()).decode()
        self.assertEqual(self.driver.execute_script(DROP, "dropped.wav", content), [True, False])
        self.until_playing()
        self.assertIn("dropped.wav, stereo", self.text("#status"))

    def test_a_file_that_cannot_be_read_is_named(self):
        self.before_page("Blob.prototype.arrayBuffer = () => Promise.reject(new DOMException('no', 'NotFoundError'))")
        self.open()
        self.driver.execute_script(DROP, "folder", "")
        self.until("no answer", lambda: "cannot read folder." in self.text("#status"))

    def test_a_file_beyond_the_limits_is_refused(self):
        self.open()
        rate_hz = 8000
        frames = rate_hz * 60 * 21
        form = struct.pack("<HHIIHH", 1, 1, rate_hz, rate_hz, 1, 8)
        self.give("long.wav", b"RIFF" + struct.pack("<I", 36 + frames) + b"WAVEfmt " + struct.pack("<I", 16) + form +
                  b"data" + struct.pack("<I", frames) + bytes([128]) * frames)
        self.until("no answer", lambda: "long.wav is too long: this page takes up to 20 min" in self.text("#status"))
        large = os.path.join(self.folder.name, "large.wav")
        with open(large, "wb") as file:
            file.truncate(1_000_000_001)
        self.find("#file").send_keys(large)
        self.until("no answer", lambda: "large.wav is too large" in self.text("#status"))

    def test_a_layout_that_the_effects_do_not_take_is_refused(self):
        self.open()
        self.give("three.wav", [tone(1)] * 3)
        self.until("no answer", lambda: "three.wav has 3 channels" in self.text("#status"))

    def test_a_browser_without_vectors_gets_the_other_build(self):
        self.before_page("WebAssembly.validate = () => false")
        self.open()
        self.assertEqual(self.text("#variant"), "without vectors")
        self.find("[data-example='2']").click()
        self.until_playing()

    def test_a_browser_without_audio_worklets_is_told(self):
        self.before_page("delete globalThis.AudioWorkletNode")
        self.open()
        self.assertIn("no audio worklets", self.text("#status"))
        self.assertFalse(self.find("[data-example='2']").is_enabled())

    def test_a_browser_without_webassembly_is_told(self):
        self.before_page("delete globalThis.WebAssembly")
        self.open()
        self.assertIn("cannot run WebAssembly", self.text("#status"))
        self.assertFalse(self.find("#file").is_enabled())

    def test_an_engine_that_is_missing_is_named(self):
        self.before_page("WebAssembly.validate = () => false; document.addEventListener('DOMContentLoaded', () => {"
                         "const append = document.head.append.bind(document.head);"
                         "document.head.append = (script) => { script.src += '.gone'; append(script); }; })")
        self.open()
        self.find("[data-example='2']").click()
        self.until("no answer", lambda: "cannot load" in self.text("#status"))

    def test_effects_that_stop_while_they_run_are_reported(self):
        self.before_page("const Whole = Blob; globalThis.Blob = function (parts, options) { return new Whole(parts.map("
                         "(part) => String(part).replace('const started_ms = now_ms();', '$& this.calls = (this.calls ?? 0) + 1;"
                         "if (this.calls > 400) throw new Error();')), options); }")
        self.open()
        self.find("[data-example='2']").click()
        self.until("no answer", lambda: "effects stopped after an error" in self.text("#status"))
        self.assertEqual(self.text("#play"), "Play")
        self.assertFalse(self.find("#play").is_enabled())

    def test_a_worklet_that_did_not_load_is_tried_again(self):
        self.before_page("const add = AudioWorklet.prototype.addModule; let refusals = 2;"
                         "AudioWorklet.prototype.addModule = function (address) { return refusals-- > 0 ?"
                         "Promise.reject(new Error('no')) : add.call(this, address); }")
        self.open()
        self.find("[data-example='2']").click()
        self.until("no answer", lambda: "could not load the effects" in self.text("#status"))
        self.find("[data-example='2']").click()
        self.until_playing()

    def test_the_page_works_when_it_is_opened_from_a_file(self):
        self.open(f"file://{PAGE}/index.html")
        self.find("[data-example='6']").click()
        self.until_playing()
        self.until("no share", lambda: "%" in self.text("#share"))


    def test_a_single_file_runs_the_effects(self):
        texts = []
        for name in ("sonivex-engine-simd.js", "sonivex-player.js"):
            with open(os.path.join(PAGE, name), encoding="utf-8") as file:
                texts.append(f"<script>{file.read()}</script>")
        path = os.path.join(self.folder.name, "single.html")
        with open(path, "w", encoding="utf-8") as file:
            file.write("<!doctype html><title>single</title>" + "".join(texts))
        self.driver.get(f"file://{path}")
        result = self.call(CHANGE, {"effect": "original"}, {"effect": "surround", "type": "MegaBass"})
        self.assertGreater(result["level"], 0.1)
        self.assertLess(result["rough"], 32 / 32768)


class PageBeforeAClick(Browser):
    options = ()

    def test_a_browser_that_refuses_sound_plays_after_a_click(self):
        self.open()
        self.give("tone.wav", [tone(3)] * 2)
        self.until("no answer", lambda: "Press Play" in self.text("#status"))
        self.assertEqual(self.text("#play"), "Play")
        self.find("#play").click()
        self.until_playing()
        self.assertNotIn("Press Play", self.text("#status"))


class PageLooks(Browser):
    def contrast(self, selector):
        """The ratio of luminances of a text and what is behind it."""
        return self.driver.execute_script(
            """const luminance = (colour) => {
                const [r, g, b] = colour.match(/[\\d.]+/g).slice(0, 3).map((x) => x / 255)
                    .map((x) => (x <= 0.04045 ? x / 12.92 : ((x + 0.055) / 1.055) ** 2.4));
                return 0.2126 * r + 0.7152 * g + 0.0722 * b;
            };
            const element = document.querySelector(arguments[0]);
            let behind = element;
            while (/rgba\\(.*, 0\\)/.test(getComputedStyle(behind).backgroundColor)) behind = behind.parentElement;
            const [low, high] = [luminance(getComputedStyle(element).color),
                luminance(getComputedStyle(behind).backgroundColor)].sort((a, b) => a - b);
            return (high + 0.05) / (low + 0.05);""", selector)

    def test_texts_are_legible_in_light_and_dark(self):
        papers = set()
        for scheme in ("light", "dark"):
            self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia",
                                        {"features": [{"name": "prefers-color-scheme", "value": scheme}]})
            self.open()
            self.find("[data-example='8']").click()
            self.until_playing()
            self.find("[value=MegaBass]").click()
            for selector in ("h1", "header p", "#status", ".button", "#play", "legend", ".hint", "dt", "dd", ".level"):
                self.assertGreaterEqual(self.contrast(selector), 4.5, f"{selector} in {scheme}")
            papers.add(self.driver.execute_script("return getComputedStyle(document.body).backgroundColor"))
            self.picture(scheme)
            self.give("bad.wav", b"nothing")
            self.until("no answer", lambda: "cannot decode" in self.text("#status"))
            self.assertGreaterEqual(self.contrast("#status"), 4.5, f"the error in {scheme}")
        self.assertEqual(len(papers), 2, "light and dark look alike")

    def test_a_narrow_window_needs_no_sideways_scrolling(self):
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                    {"width": 360, "height": 740, "deviceScaleFactor": 1, "mobile": True})
        self.addCleanup(self.driver.execute_cdp_cmd, "Emulation.clearDeviceMetricsOverride", {})
        self.open()
        self.find("[data-example='8']").click()
        self.until_playing()
        self.picture("narrow")
        self.assertLessEqual(self.driver.execute_script("return document.documentElement.scrollWidth"), 360)

    def test_every_control_is_reached_by_the_keyboard_and_has_a_name(self):
        self.open()
        reached = []
        for _ in range(12):
            if not reached:
                self.driver.execute_script("document.body.focus()")
            webdriver.ActionChains(self.driver).send_keys(Keys.TAB).perform()
            element = self.driver.switch_to.active_element
            reached.append(element.get_attribute("id") or element.get_attribute("name") or element.text)
            if element.tag_name in ("button", "input"):
                self.assertNotEqual(element.accessible_name, "", reached[-1])
        for wanted in ("file", "stereo", "5.1", "7.1", "effect", "type", "limiter"):
            self.assertIn(wanted, reached)

    def picture(self, name):
        folder = os.environ.get("SONIVEX_SCREENSHOTS")
        if folder:
            os.makedirs(folder, exist_ok=True)
            self.driver.save_screenshot(os.path.join(folder, f"{name}.png"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[5:], verbosity=2)
