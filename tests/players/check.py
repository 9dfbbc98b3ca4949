"""Checks that films play in step after rendering: their beeps come with their flashes, as in the input.

Usage: check.py PROGRAM
Exit codes: 0 all in step, 1 not, 77 a player is not installed.
"""
import shutil
import sys
import tempfile
from dataclasses import dataclass
from pathlib import Path
from typing import Callable

import chromium
import decoded
import films
import mpv

NOT_INSTALLED = 77
EFFECTS = ["normalizer", "surround"]
MOST_MISSING = 2  # instants that a browser under load may miss
SHIFT_S = 0.1  # of the film that must be found out of step
# The sound of surround begins up to 40 samples after the start of its impulse responses, and the reflections
# of the first 2 ms change when a beep reaches half its magnitude.
SURROUND_S = 0.003


@dataclass(frozen=True)
class Player:
    """tolerance_s: by how much the beeps of output and input may differ against their flashes."""

    name: str
    measure: Callable
    tolerance_s: float
    # Every instant counts, or the median only. A browser may drop a picture.
    counts_every_instant: bool


PLAYERS = [
    # Matroska rounds the timestamps of picture and sound to 1 ms each. The pre-echo of encoders adds less.
    Player("decoded", decoded.measure, 0.002, True),
    Player("mpv", mpv.measure, 0.002, True),
    # A frame of the film. One refresh of the screen is 17 ms, the browser's buffer of sound 10 ms. Repeated
    # runs differ by up to 14 ms, and by up to 36 ms with five busy programs on each processor.
    Player("chromium", chromium.measure, 1.0 / films.FRAME_RATE, False),
]


def difference(player, before, after):
    """Returns the largest change of the offset in seconds, with its sign."""
    if not player.counts_every_instant:
        return after.median_s - before.median_s
    if len(before.each_s) != len(after.each_s):
        raise RuntimeError(f"{len(after.each_s)} instants instead of {len(before.each_s)}")
    return max((b - a for a, b in zip(before.each_s, after.each_s)), key=abs)


def verdict(player, before, after, tolerance_s):
    """Returns whether a film is in step, and a line that says by how much."""
    changed_s = difference(player, before, after)
    most_missing = 0 if player.counts_every_instant else MOST_MISSING
    is_in_step = abs(changed_s) <= tolerance_s and after.missing <= most_missing
    return is_in_step, (f"{after.text()}, {1000 * changed_s:+7.2f} ms from the input"
                        f" (at most {1000 * tolerance_s:.0f}), {after.missing} missing")


class Report:
    """Prints each result and counts those that are wrong."""

    def __init__(self):
        self.wrong = []

    def add(self, name, is_right, text):
        if not is_right:
            self.wrong.append(name)
        print(f"{'ok  ' if is_right else 'FAIL'} {name:48} {text}", flush=True)


def check_instrument(player, film, report):
    """Checks that a player shows a film whose sound is late to be out of step."""
    name = f"{player.name}, sound late by {1000 * SHIFT_S:.0f} ms"
    before, after = player.measure(film), player.measure(films.shift_sound(film, SHIFT_S))
    is_in_step, text = verdict(player, before, after, player.tolerance_s)
    seen_s = difference(player, before, after)
    report.add(name, not is_in_step and abs(seen_s - SHIFT_S) <= player.tolerance_s, text)


def check_film(program, film, folder, report):
    """Renders a film with each effect and compares it with its input in each player."""
    path = films.make(film, folder)
    inputs = []
    for player in PLAYERS:
        try:
            offsets = player.measure(path)
        except chromium.NotPlayed as error:
            print(f"--   {player.name}, {film.name}: left out: {error}", flush=True)
            continue
        most_missing = 0 if player.counts_every_instant else MOST_MISSING
        report.add(f"{player.name}, {film.name}", offsets.missing <= most_missing, offsets.text())
        inputs.append((player, offsets))
    for effect in EFFECTS:
        out = Path(folder) / f"{effect}-{film.name}"
        name = f"{film.name}, {effect}"
        try:
            films.run([program, "render", "--quiet", "--effect", effect, path, out])
        except RuntimeError as error:
            report.add(name, False, str(error))
            continue
        for player, before in inputs:
            tolerance_s = player.tolerance_s + (SURROUND_S if effect == "surround" else 0.0)
            try:
                is_right, text = verdict(player, before, player.measure(out), tolerance_s)
                report.add(f"{player.name}, {name}", is_right, text)
            except RuntimeError as error:
                report.add(f"{player.name}, {name}", False, str(error))


def main(program):
    missing = [name for name in ("ffmpeg", "ffprobe", "mpv", "chromium") if shutil.which(name) is None]
    if missing:
        print(f"skipped: not installed: {', '.join(missing)}")
        return NOT_INSTALLED
    report = Report()
    with tempfile.TemporaryDirectory() as folder:
        control = films.make(films.CONTROL, folder)
        for player in PLAYERS:
            check_instrument(player, control, report)
        for film in films.FILMS:
            check_film(program, film, folder, report)
    if report.wrong:
        print(f"{len(report.wrong)} wrong: {'; '.join(report.wrong)}")
        return 1
    print("all in step")
    return 0


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit("usage: check.py PROGRAM")
    sys.exit(main(sys.argv[1]))
