"""Measures a film as Chromium plays it, in a page that times the pictures shown and the sound put out."""
import http.server
import json
import os
import queue
import signal
import statistics
import subprocess
import tempfile
import threading
from pathlib import Path

from instants import beginnings_of_beeps, beginnings_of_flashes, offsets

TIME_LIMIT_S = 60  # for a film of 20 s
FOLDER = Path(__file__).parent
PAGES = {"/": ("page.html", "text/html"), "/peaks.js": ("peaks.js", "text/javascript")}


class NotPlayed(RuntimeError):
    """Chromium does not play the film."""


def handler_for(film, results):
    """Returns a handler that serves the page and one film, and takes the page's result."""

    class Handler(http.server.BaseHTTPRequestHandler):
        def do_GET(self):  # pylint: disable=invalid-name
            if self.path == "/film":
                self.answer(Path(film).read_bytes(), "application/octet-stream")
            elif self.path in PAGES:
                name, kind = PAGES[self.path]
                self.answer((FOLDER / name).read_bytes(), kind)
            else:
                self.send_error(404)

        def do_POST(self):  # pylint: disable=invalid-name
            result = json.loads(self.rfile.read(int(self.headers["Content-Length"])))
            self.answer(b"", "text/plain")  # first, because the result ends the browser
            results.put(result)

        def answer(self, body, kind):
            self.send_response(200)
            self.send_header("Content-Type", kind)
            self.send_header("Content-Length", str(len(body)))
            self.end_headers()
            self.wfile.write(body)

        def log_message(self, *_):
            pass

    return Handler


def play(film):
    """Plays a film in a new browser and returns what the page saw. Raises RuntimeError after a time limit."""
    results = queue.Queue()
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), handler_for(film, results))
    threading.Thread(target=server.serve_forever, daemon=True).start()
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as profile:
        browser = subprocess.Popen(
            ["chromium", "--headless=new", "--no-sandbox", "--disable-gpu", "--no-first-run",
             "--disable-sync", "--disable-component-update", "--disable-background-networking",
             "--autoplay-policy=no-user-gesture-required", f"--user-data-dir={profile}",
             f"http://127.0.0.1:{server.server_address[1]}/"],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            start_new_session=True)
        try:
            result = results.get(timeout=TIME_LIMIT_S)
        except queue.Empty:
            raise RuntimeError(f"chromium did not finish {film} within {TIME_LIMIT_S} s") from None
        finally:
            os.killpg(browser.pid, signal.SIGKILL)
            browser.wait()
            server.shutdown()
            server.server_close()
    return result


def measure(path):
    """Returns the offsets of a film.

    They contain the browser's own latency, which is the same for every film.
    """
    seen = play(path)
    if seen["error"]:
        raise NotPlayed(f"chromium does not play {path}: {seen['error']}")
    # The sound has the time of the audio context, the pictures that of the page.
    lead_s = statistics.median(page_s - context_s for context_s, page_s in seen["clocks"])
    flashes = beginnings_of_flashes(seen["frames"])
    # A step's peak is below the beep's at its beginning, so a smaller share than usual finds the same step.
    beeps = beginnings_of_beeps(seen["peaks"], seen["step_s"], seen["start_s"] + lead_s, share=0.3)
    return offsets(flashes, beeps)
