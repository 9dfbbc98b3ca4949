"""Measures a film as mpv plays it: mpv writes its picture and its sound, with the times that it gave them."""
import tempfile
from pathlib import Path

import decoded
from films import run

TIME_LIMIT_S = 90


def measure(path):
    """Returns the offsets of a film.

    mpv's encoding mode is its player with other outputs: it demuxes, decodes and synchronises as in playback.
    The copy has bare pictures and samples, so that no encoder adds a delay.
    """
    with tempfile.TemporaryDirectory() as folder:
        copy = Path(folder) / "played.nut"
        run(["mpv", "--no-config", "--really-quiet", "--no-terminal", "--hwdec=no", "--of=nut",
             "--ovc=rawvideo", "--oac=pcm_s16le", "--vf=scale=32:18,format=gray", f"--o={copy}", path],
            TIME_LIMIT_S)
        return decoded.measure(copy)
