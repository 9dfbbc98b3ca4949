"""Finds where flashes and beeps begin, and by how much the beeps lag the flashes."""
import statistics
from dataclasses import dataclass

HOLD_S = 0.3  # a beep is shorter, and the pause between two is longer
MOST_APART_S = 0.4  # less than half the time between two instants


def beginnings_of_beeps(peaks, step_s, start_s=0.0, share=0.5):
    """Returns when beeps begin.

    peaks: the largest magnitude of each step. A beep begins where the magnitude first exceeds `share` of the
    beep's own largest magnitude, because an effect changes the level over time.
    """
    floor = 0.25 * max(peaks, default=0.0)
    hold = round(HOLD_S / step_s)
    window = round(0.06 / step_s)
    found = []
    n = 0
    while n < len(peaks):
        if peaks[n] <= floor or floor <= 0.0:
            n += 1
            continue
        first = max(0, n - window)
        threshold = share * max(peaks[n:n + window])
        while peaks[first] <= threshold:
            first += 1
        found.append(start_s + first * step_s)
        n = first + hold
    return found


def beginnings_of_flashes(frames):
    """Returns when flashes begin. frames: pairs of time in seconds and brightness, 0 to 255, in order."""
    found = []
    was_white = False
    for time_s, brightness in frames:
        is_white = brightness > 127
        if is_white and not was_white:
            found.append(time_s)
        was_white = is_white
    return found


@dataclass(frozen=True)
class Offsets:
    """By how many seconds each beep lags its flash. `missing` counts flashes without a beep."""

    each_s: tuple
    missing: int

    @property
    def median_s(self):
        return statistics.median(self.each_s)

    @property
    def spread_s(self):
        return max(self.each_s) - min(self.each_s)

    def text(self):
        return (f"{1000 * self.median_s:+8.2f} ms (spread {1000 * self.spread_s:6.2f} ms,"
                f" {len(self.each_s)} instants)")


def offsets(flashes, beeps):
    """Pairs each flash with the nearest beep."""
    each = []
    for flash in flashes:
        nearest = min(beeps, key=lambda beep: abs(beep - flash), default=None)
        if nearest is not None and abs(nearest - flash) < MOST_APART_S:
            each.append(nearest - flash)
    if not each:
        raise RuntimeError(f"no beep belongs to a flash ({len(flashes)} flashes, {len(beeps)} beeps)")
    return Offsets(tuple(each), len(flashes) - len(each))
