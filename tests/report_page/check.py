#!/usr/bin/env python3
"""Opens a report in Chromium and uses it as a listener does: players, keys, blind test, both colour schemes, print.

Usage: check.py SONIVEX [PICTURES]
    SONIVEX   the program
    PICTURES  a folder that receives screenshots

Exits with 77 if Chromium, its driver or Selenium is missing.
"""

import base64
import json
import math
import pathlib
import struct
import subprocess
import sys
import tempfile
import time
import wave

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.options import Options
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
    from selenium.webdriver.support.ui import Select, WebDriverWait
except ImportError:
    print("Selenium is not installed")
    sys.exit(77)

BROWSER = pathlib.Path("/usr/bin/chromium")
DRIVER = pathlib.Path("/usr/bin/chromedriver")
RATE_HZ = 48000
SECONDS = 12
PATIENCE_S = 30


def write_sound(path, length=SECONDS * RATE_HZ):
    """Writes a stereo tone whose level rises, so that all effects have something to do."""
    frames = bytearray()
    for n in range(length):
        level = 1500 + 4000 * n / (SECONDS * RATE_HZ)
        value = int(level * math.sin(2 * math.pi * 440 * n / RATE_HZ))
        frames += struct.pack("<hh", value, value // 2)
    with wave.open(str(path), "wb") as file:
        file.setnchannels(2)
        file.setsampwidth(2)
        file.setframerate(RATE_HZ)
        file.writeframes(bytes(frames))


def open_browser(*arguments):
    options = Options()
    options.binary_location = str(BROWSER)
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--hide-scrollbars", *arguments):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
    browser = webdriver.Chrome(service=Service(str(DRIVER)), options=options)
    browser.set_window_size(1100, 900)
    return browser


def screenshot(browser, path):
    height = browser.execute_script("return document.documentElement.scrollHeight")
    clip = {"x": 0, "y": 0, "width": 1085, "height": height, "scale": 1}
    shot = browser.execute_cdp_cmd("Page.captureScreenshot", {"captureBeyondViewport": True, "clip": clip})
    path.write_bytes(base64.b64decode(shot["data"]))


class Page:
    """A report that is open in a browser."""

    def __init__(self, browser, path):
        self.browser = browser
        browser.get(path.as_uri())

    def run(self, script, *arguments):
        return self.browser.execute_script(script, *arguments)

    def element(self, name):
        return self.browser.find_element(By.ID, name)

    def text(self, name):
        return self.run("return document.getElementById(arguments[0]).textContent", name)

    def press(self, key):
        self.browser.switch_to.active_element.send_keys(key)

    def version(self, number):
        return self.browser.find_element(By.CSS_SELECTOR, f"button[data-version='{number}']")

    def wait_for(self, condition, what):
        WebDriverWait(self.browser, PATIENCE_S).until(lambda _: self.run("return " + condition), what)

    def gains(self):
        return self.run("return window.report.gains")


def check(is_true, what):
    if not is_true:
        raise AssertionError(what)


def check_players(page):
    """Playing, switching by mouse and keys, pausing and seeking."""
    check(not page.run("return window.report.isPlaying"), "the page plays by itself")
    page.element("play").click()
    page.wait_for("window.report.isPlaying", "Play does not play: " + page.text("message"))
    lengths = page.run("return window.report.buffers.map((buffer) => buffer.length / buffer.sampleRate)")
    check(len(lengths) == 4, f"{len(lengths)} sounds")
    check(all(abs(length - SECONDS) < 0.002 for length in lengths), f"the sounds have the lengths {lengths}")
    page.wait_for("window.report.position > 0.3", "the position stands still")

    summary = json.loads(page.text("summary"))
    for number in (1, 3, 2, 0):
        before = page.run("return window.report.position")
        page.version(number).click()
        time.sleep(0.3)
        gains = page.gains()
        expected = 10 ** (summary["versions"][number]["matching_gain_db"] / 20)
        check(abs(gains[number] - expected) < 1e-6, f"version {number} has the gain {gains[number]}")
        check(all(gain == 0 for other, gain in enumerate(gains) if other != number), f"others are heard: {gains}")
        check(page.run("return window.report.position") > before, "switching went back")
        check(page.version(number).get_attribute("aria-pressed") == "true", "the button is not pressed")

    page.press("3")
    check(page.run("return window.report.heard") == 2, "the key 3 does not switch")
    page.press("9")
    check(page.run("return window.report.heard") == 2, "the key 9 has no version, but switches")
    page.press(Keys.SPACE)
    page.wait_for("!window.report.isPlaying", "space does not pause")
    stopped = page.run("return window.report.position")
    time.sleep(0.3)
    check(page.run("return window.report.position") == stopped, "the position moves during a pause")
    page.press(Keys.SPACE)
    page.wait_for("window.report.isPlaying", "space does not play")
    check(page.run("return window.report.position") >= stopped, "playing begins anew")

    page.run("const seek = arguments[0]; seek.value = 11; seek.dispatchEvent(new Event('input'))",
             page.element("seek"))
    check(10.5 < page.run("return window.report.position") < 12, "the slider does not seek")
    page.wait_for("!window.report.isPlaying", "the end does not end playing")
    check(page.run("return window.report.position") == 0, "after the end the position is not the beginning")

    page.element("matching").click()
    page.element("play").click()
    page.wait_for("window.report.isPlaying", "Play does not play again")
    time.sleep(0.3)
    common = min([0] + [version["matching_gain_db"] for version in summary["versions"]])
    check(abs(max(page.gains()) - 10 ** (common / 20)) < 1e-6, "without matching the gains differ")
    page.element("matching").click()
    page.press(Keys.SPACE)


def check_repeat(page):
    """Repeating goes round, and the sound goes on where it is when repeating is switched off or on."""
    if page.run("return window.report.isPlaying"):
        page.element("play").click()
        page.wait_for("!window.report.isPlaying", "Pause does not pause")
    page.element("loop").click()
    page.run("const seek = arguments[0]; seek.value = 11.5; seek.dispatchEvent(new Event('input'))",
             page.element("seek"))
    page.element("play").click()
    page.wait_for("window.report.position > 1 && window.report.position < 10", "the sound does not begin anew")
    for wanted in ("off", "on"):
        before = page.run("return window.report.position")
        page.element("loop").click()
        after = page.run("return window.report.position")
        check(before <= after < before + 3, f"repeat {wanted} jumps from {before} s to {after} s")
    page.element("loop").click()
    page.element("play").click()
    page.wait_for("!window.report.isPlaying", "Pause does not pause")


def check_fade(page):
    """The page's own fade, rendered offline, crosses from one tone to another of equal shape without a step."""
    steepest, total = page.browser.execute_async_script("""
        const done = arguments[0];
        const rate = 48000;
        const context = new OfflineAudioContext(1, rate, rate);
        const tone = context.createBuffer(1, rate, rate);
        tone.getChannelData(0).fill(0.5);
        const gains = [1, 0].map((value) => {
            const source = context.createBufferSource();
            source.buffer = tone;
            const gain = context.createGain();
            gain.gain.value = value;
            source.connect(gain).connect(context.destination);
            source.start();
            return gain.gain;
        });
        window.report.fade(gains[0], 1, 0, 0.5);
        window.report.fade(gains[1], 0, 0.5, 0.5);
        context.startRendering().then((buffer) => {
            const samples = buffer.getChannelData(0);
            let steepest = 0;
            for (let n = 1; n < rate; ++n) steepest = Math.max(steepest, Math.abs(samples[n] - samples[n - 1]));
            done([steepest, samples[rate - 1]]);
        });""")
    fade_frames = page.run("return window.report.FADE_S") * RATE_HZ
    check(steepest < 2 * 0.25 / fade_frames, f"the fade has a step of {steepest}")
    check(abs(total - 0.25) < 1e-6, f"the fade ends at {total}")


def check_blind_test(page):
    """The blind test hides which version X is, counts, and gives the probability of guessing."""
    Select(page.element("blind-b")).select_by_index(1)
    page.run("document.activeElement.blur()")
    page.press("x")
    check(page.text("blind-toggle") == "End the blind test", "X does not begin the test")
    check(not page.version(0).is_enabled(), "the versions can be chosen during the test")
    pressed = page.browser.find_elements(By.CSS_SELECTOR, "button[data-version][aria-pressed='true']")
    check(not pressed, "a button tells which version X is")
    for right in (False, True, True, True):
        page.press("a")
        check(page.run("return window.report.heard") == 0, "A is not the first version")
        page.press("b")
        check(page.run("return window.report.heard") == 1, "B is not the second version")
        page.press("x")
        is_first = page.run("return window.report.isXFirst")
        check(page.run("return window.report.heard") == (0 if is_first else 1), "X is neither A nor B")
        page.press("y" if is_first == right else "n")
        if not right:
            check("0 of 1 right" in page.text("score"), page.text("score"))
            check("guessing is 100 %" in page.text("score"), page.text("score"))
    check("3 of 4 right" in page.text("score"), page.text("score"))
    check("31 %" in page.text("score"), page.text("score"))  # (4 + 1) / 16
    check(page.run("return window.report.chance(9, 10)") == 11 / 1024, "the probability of 9 of 10 is wrong")
    for probability, text in ((11 / 1024, "1.1 %"), (2.0 ** -13, "0.012 %"), (2.0 ** -40, "less than 0.01 %"),
                              (0.994, "99 %"), (255 / 256, "more than 99 %"), (1, "100 %")):
        check(page.run(f"return window.report.percentageOf({probability})") == text, f"{probability} is not {text}")
    page.press(Keys.ESCAPE)
    check(page.version(0).is_enabled(), "Escape does not end the test")


def check_schemes(page, folder):
    """Both schemes have their own colours, and paper has those of light."""
    colours = {}
    for scheme in ("light", "dark"):
        page.browser.execute_cdp_cmd("Emulation.setEmulatedMedia",
                                     {"features": [{"name": "prefers-color-scheme", "value": scheme}]})
        colours[scheme] = page.run("""
            const of = (name) => getComputedStyle(document.documentElement).getPropertyValue(name).trim();
            return [getComputedStyle(document.body).backgroundColor, of("--plot-blue"), of("--plot-heat"),
                    getComputedStyle(document.querySelector(".plot text")).fill]""")
        if folder:
            screenshot(page.browser, folder / f"report-{scheme}.png")
    for light, dark in zip(colours["light"], colours["dark"]):
        check(light != dark, f"{light} is the same in both schemes")
    page.browser.execute_cdp_cmd("Emulation.setEmulatedMedia",
                                 {"media": "print",
                                  "features": [{"name": "prefers-color-scheme", "value": "dark"}]})
    check(page.run("return getComputedStyle(document.body).backgroundColor") == colours["light"][0],
          "paper is dark")
    check(page.run("return getComputedStyle(document.getElementById('player')).display") == "none",
          "players are printed")
    printed = page.browser.execute_cdp_cmd("Page.printToPDF", {"printBackground": False})
    check(len(base64.b64decode(printed["data"])) > 20000, "the print is empty")
    page.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"media": "", "features": []})


def check_access(page):
    """Everything that shows or acts has a name for those who do not see it, and the keyboard reaches it."""
    unnamed = page.run("""
        return [...document.querySelectorAll("button, input, select, [role=img], [role=region]")].filter((element) =>
            !element.getAttribute("aria-label") && !element.textContent.trim() && !element.closest("label"))
            .map((element) => element.outerHTML)""")
    check(not unnamed, f"without a name: {unnamed}")
    page.run("document.activeElement.blur(); window.scrollTo(0, 0)")
    reached = set()
    for _ in range(24):
        page.press(Keys.TAB)
        reached.add(page.run("return document.activeElement.id || document.activeElement.dataset.version || ''"))
    for name in ("play", "seek", "0", "3", "matching", "loop", "blind-a", "blind-b", "blind-toggle"):
        check(name in reached, f"Tab does not reach {name}")
    levels = page.run("return [...document.querySelectorAll('h1, h2, h3')].map((heading) => heading.tagName)")
    check(levels[0] == "H1" and levels.count("H1") == 1, f"the headings are {levels}")


def check_narrow(page):
    page.browser.set_window_size(500, 900)
    wide = page.run("return document.documentElement.scrollWidth - document.documentElement.clientWidth")
    check(wide <= 0, f"the page is {wide} pixels wider than a narrow window")
    page.browser.set_window_size(1100, 900)


def check_quiet(page):
    """The page asks the network for nothing and reports no error."""
    asked = []
    for entry in page.browser.get_log("performance"):
        event = json.loads(entry["message"])["message"]
        if event["method"] == "Network.requestWillBeSent":
            asked.append(event["params"]["request"]["url"])
    outside = [url for url in asked if not url.startswith(("file:", "data:"))]
    check(asked and not outside, f"the page asks for {outside or 'nothing, not even itself'}")
    check_errors(page)


def check_errors(page):
    errors = [entry for entry in page.browser.get_log("browser") if entry["level"] == "SEVERE"]
    check(not errors, f"errors: {errors}")


def check_single_sample(browser, sonivex, folder):
    """The shortest sound there is plays to its end, and repeats."""
    sound = folder / "single.wav"
    path = folder / "single.html"
    write_sound(sound, 1)
    subprocess.run([sonivex, "report", str(sound), "-o", str(path), "--quiet"], check=True)
    page = Page(browser, path)
    page.element("play").click()
    page.wait_for("window.report.buffers !== null && !window.report.isPlaying", "the sound does not end")
    check(page.text("play") == "Play", "the button does not show the end")
    page.element("loop").click()
    page.element("play").click()
    page.wait_for("window.report.isPlaying", "Play does not play")
    check(page.run("return Number.isFinite(window.report.position)"), "the position is no number")
    check_errors(page)


def check_refusals(browser, path):
    """A browser that does not let the page play, and one that cannot decode Opus, each tell so."""
    browser.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": """
        AudioContext.prototype.decodeAudioData = () => Promise.reject(new DOMException("no", "EncodingError"));"""})
    page = Page(browser, path)
    page.element("play").click()
    page.wait_for("document.getElementById('message').textContent.includes('cannot decode Opus')", "no message")
    check(not page.element("play").is_enabled(), "Play stays although nothing plays")


def check_waiting(browser, path):
    browser.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": """
        let is_refused = true;
        const resume = AudioContext.prototype.resume;
        const state = Object.getOwnPropertyDescriptor(BaseAudioContext.prototype, "state");
        Object.defineProperty(BaseAudioContext.prototype, "state", {
            get() { return is_refused ? "suspended" : state.get.call(this); }});
        AudioContext.prototype.resume = function () {
            return is_refused ? new Promise(() => {}) : resume.call(this); };
        window.allow = () => { is_refused = false; };"""})
    page = Page(browser, path)
    page.element("play").click()
    page.wait_for("document.getElementById('message').textContent.includes('Click Play once more')", "no message")
    check("no device for sound" in page.text("message"), page.text("message"))
    page.run("window.allow()")
    page.element("play").click()
    page.wait_for("window.report.isPlaying", "the second click does not play")
    check(page.text("message") == "", "the message stays")


def main():
    if not BROWSER.exists() or not DRIVER.exists():
        print("Chromium and its driver are not installed")
        return 77
    sonivex = sys.argv[1]
    pictures = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else None
    with tempfile.TemporaryDirectory() as folder:
        sound = pathlib.Path(folder, "a <b>tone&amp; more.wav")
        path = pathlib.Path(folder, "page.html")
        write_sound(sound)
        subprocess.run([sonivex, "report", str(sound), "-o", str(path), "--quiet"], check=True)
        browser = open_browser()
        try:
            page = Page(browser, path)
            check(page.run("return document.querySelector('h1').textContent") == sound.name, "the heading is wrong")
            for part in (check_players, check_repeat, check_fade, check_blind_test, check_access, check_narrow):
                part(page)
                print("passed:", part.__name__)
            check_schemes(page, pictures)
            print("passed: check_schemes")
            check_quiet(page)
            print("passed: check_quiet")
        finally:
            browser.quit()
        for part, arguments in ((check_refusals, (path,)), (check_waiting, (path,)),
                                (check_single_sample, (sonivex, pathlib.Path(folder)))):
            browser = open_browser()
            try:
                part(browser, *arguments)
                print("passed:", part.__name__)
            finally:
                browser.quit()
    return 0


if __name__ == "__main__":
    sys.exit(main())
