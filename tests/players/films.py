"""Films whose picture flashes and whose sound beeps at the same instants.

The instants are irregular, so that a shift by one of them matches nothing.
"""
import subprocess
from dataclasses import dataclass
from pathlib import Path

FRAME_RATE = 25
LENGTH_S = 20
FLASH_FRAMES = 3  # a player that drops a frame still shows the flash
BEEP_S = FLASH_FRAMES / FRAME_RATE
# One instant each 1.08 s and a little more: the frame in which a flash begins.
FLASHES = [22 + 27 * i + i * i * 7 % 11 for i in range(17)]
INSTANTS_S = [frame / FRAME_RATE for frame in FLASHES]


@dataclass(frozen=True)
class Film:
    """How a film is stored. `audio_start_s` is the timestamp at which its sound begins."""

    name: str
    video: tuple
    audio: tuple
    audio_start_s: float = 0.0


H264 = ("-c:v", "libx264", "-preset", "veryfast", "-pix_fmt", "yuv420p", "-g", "50", "-bf", "2")
VP8 = ("-c:v", "libvpx", "-deadline", "realtime", "-b:v", "500k", "-g", "50")
VP9 = ("-c:v", "libvpx-vp9", "-deadline", "realtime", "-cpu-used", "8", "-b:v", "500k", "-g", "50")
OPUS = ("-c:a", "libopus", "-b:a", "128k")
AAC = ("-c:a", "aac", "-b:a", "160k")

FILMS = [
    Film("h264-opus.mkv", H264, OPUS),
    Film("h264-aac.mp4", H264, AAC),
    Film("vp9-opus.webm", VP9, OPUS),
    Film("vp8-opus-late.webm", VP8, OPUS, audio_start_s=0.5),
    Film("h264-aac-late.mp4", H264, AAC, audio_start_s=0.5),
    Film("h264-opus-late.mkv", H264, OPUS, audio_start_s=0.5),
]
# The film whose sound is shifted to test the measurement itself. MP4 keeps the timestamps of a copy to the
# sample.
CONTROL = Film("control.mp4", H264, AAC)


def run(command, timeout_s=120):
    """Runs a program and returns its standard output. Raises RuntimeError with its messages if it fails."""
    try:
        result = subprocess.run([str(word) for word in command], stdin=subprocess.DEVNULL,
                                capture_output=True, timeout=timeout_s, check=False)
    except subprocess.TimeoutExpired:
        raise RuntimeError(f"{command[0]} did not finish within {timeout_s} s") from None
    if result.returncode != 0:
        messages = result.stderr.decode(errors="replace")[-600:].strip()
        raise RuntimeError(f"{command[0]} failed ({result.returncode}): {messages}")
    return result.stdout


def ffmpeg(*arguments):
    """Runs ffmpeg, overwriting its output."""
    run(["ffmpeg", "-nostdin", "-v", "error", "-y", *arguments])


def make(film, folder):
    """Writes a film and returns its path."""
    path = Path(folder) / film.name
    flashes = "+".join(f"between(n,{frame},{frame + FLASH_FRAMES - 1})" for frame in FLASHES)
    picture = (f"color=black:size=320x180:rate={FRAME_RATE}:duration={LENGTH_S},"
               f"drawbox=color=white:thickness=fill:enable='{flashes}'")
    # Each beep begins with a zero of the sine. The faint noise keeps the encoders and the effects busy.
    gates = "+".join(f"gte(t,{start:.3f})*lt(t,{start + BEEP_S:.3f})"
                     for start in (instant - film.audio_start_s for instant in INSTANTS_S))
    beep = f"0.25*sin(2*PI*1000*t)*({gates})"
    sound = (f"aevalsrc='{beep}+0.0005*(random(0)-0.5)|{beep}+0.0005*(random(1)-0.5)'"
             f":sample_rate=48000:duration={LENGTH_S - film.audio_start_s}")
    ffmpeg("-f", "lavfi", "-i", picture, "-itsoffset", film.audio_start_s, "-f", "lavfi", "-i", sound,
           *film.video, *film.audio, path)
    return path


def shift_sound(path, seconds):
    """Writes a copy of a film whose sound is late by `seconds`, and returns its path."""
    late = path.with_name(f"{path.stem}-shifted{path.suffix}")
    ffmpeg("-i", path, "-itsoffset", seconds, "-i", path, "-map", "0:v", "-map", "1:a", "-c", "copy", late)
    return late
