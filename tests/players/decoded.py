"""Measures a film by decoding it: flashes and beeps at the timestamps that the file gives them."""
import array
import json

from films import run
from instants import beginnings_of_beeps, beginnings_of_flashes, offsets

# A frame of sound whose timestamp is farther than this from the end of the frame before it leaves a gap.
# Matroska rounds timestamps to 1 ms.
LONGEST_GAP_S = 0.0025


def frames_of(path, kind, entries):
    """Returns the decoded frames of the first stream of a kind, "v" or "a", as dictionaries."""
    text = run(["ffprobe", "-v", "error", "-select_streams", f"{kind}:0", "-show_entries", f"frame={entries}",
                "-of", "json", path])
    return json.loads(text)["frames"]


def decode_flashes(path):
    """Returns the timestamps at which flashes begin, in seconds."""
    times = [float(frame["best_effort_timestamp_time"])
             for frame in frames_of(path, "v", "best_effort_timestamp_time")]
    pixels = run(["ffmpeg", "-nostdin", "-v", "error", "-i", path, "-map", "0:v:0", "-vsync", "passthrough",
                  "-vf", "scale=1:1:flags=area,format=gray", "-f", "rawvideo", "-"])
    if len(times) != len(pixels):
        raise RuntimeError(f"{path}: {len(times)} timestamps for {len(pixels)} pictures")
    return beginnings_of_flashes(zip(times, pixels))


def decode_beeps(path):
    """Returns the timestamps at which beeps begin, in seconds, to the sample."""
    frames = frames_of(path, "a", "best_effort_timestamp_time,nb_samples")
    raw = run(["ffmpeg", "-nostdin", "-v", "error", "-i", path, "-map", "0:a:0", "-af", "pan=mono|c0=c0",
               "-f", "f32le", "-"])
    samples = array.array("f", raw)
    rate_hz = int(run(["ffprobe", "-v", "error", "-select_streams", "a:0", "-show_entries",
                       "stream=sample_rate", "-of", "csv=p=0", path]).split()[0].rstrip(b","))
    total = sum(int(frame["nb_samples"]) for frame in frames)
    if total != len(samples):
        raise RuntimeError(f"{path}: {total} samples in frames, {len(samples)} decoded")
    start_s = float(frames[0]["best_effort_timestamp_time"])
    heard = 0
    for frame in frames:
        gap_s = float(frame["best_effort_timestamp_time"]) - (start_s + heard / rate_hz)
        if abs(gap_s) > LONGEST_GAP_S:
            raise RuntimeError(f"{path}: {gap_s:+.4f} s between two frames of sound, after"
                               f" {heard / rate_hz:.3f} s")
        heard += int(frame["nb_samples"])
    magnitudes = [abs(sample) for sample in samples]
    return beginnings_of_beeps(magnitudes, 1.0 / rate_hz, start_s)


def measure(path):
    """Returns the offsets of a film."""
    return offsets(decode_flashes(path), decode_beeps(path))
