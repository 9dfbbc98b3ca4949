"""Checks the keys and the screen of `sonivex play` in a real terminal, on the sound card that SDL imitates.

Usage: check_play.py PROGRAM
Exit codes: 0 all checks hold, 1 one does not, 77 tmux or ffmpeg is not installed.
"""
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

NOT_INSTALLED = 77
PATIENCE_S = 15.0  # for a text to appear; a busy machine is slow


class Terminal:
    """A terminal of tmux with a server of its own."""

    def __init__(self, folder: Path):
        self.socket = str(folder / "tmux")
        self.tmux("-f", "/dev/null", "new-session", "-d", "-x", "100", "-y", "30", "env -u ENV HISTFILE= PS1='$ ' sh")
        self.tmux("set-option", "-g", "remain-on-exit", "on")
        self.wait_for(r"\A\$ ?$")  # a slow shell would show its prompt behind what is typed next

    def tmux(self, *arguments: str) -> str:
        command = ["tmux", "-S", self.socket, *arguments]
        return subprocess.run(command, check=True, capture_output=True, text=True, timeout=10).stdout

    def keys(self, *names: str):
        self.tmux("send-keys", *names)

    def type(self, command: str):
        self.tmux("send-keys", "-l", command)
        self.keys("Enter")

    def screen(self) -> str:
        return self.tmux("capture-pane", "-p")

    def resize(self, columns: int, rows: int):
        self.tmux("resize-window", "-x", str(columns), "-y", str(rows))

    def wait_for(self, pattern: str) -> str:
        """Waits until the screen shows what a regular expression describes, and returns the screen."""
        end = time.monotonic() + PATIENCE_S
        while time.monotonic() < end:
            screen = self.screen()
            if re.search(pattern, screen, re.MULTILINE):
                return screen
            time.sleep(0.05)
        raise AssertionError(f"the screen never showed {pattern!r}, but:\n{self.screen()}")

    def close(self):
        subprocess.run(["tmux", "-S", self.socket, "kill-server"], capture_output=True, timeout=10)


def position_s(screen: str) -> int:
    minutes, seconds = re.search(r"^(\d+):(\d\d) /", screen, re.MULTILINE).groups()
    return 60 * int(minutes) + int(seconds)


def check_keys(terminal: Terminal, program: str, music: Path):
    terminal.type(f"SDL_AUDIODRIVER=dummy {program} play {music} --effect normalizer --fps 25; echo exit=$?")
    terminal.wait_for(r"^EFFECT +normalizer +same loudness")
    terminal.wait_for(r"guard: watching at 25 fps")
    terminal.wait_for(r"^> effect +-\d+\.\d LUFS +peak +-\d+\.\d dBFS")
    terminal.keys("e")
    terminal.wait_for(r"^ORIGINAL")
    terminal.wait_for(r"^> original")
    terminal.keys("e")
    terminal.wait_for(r"^EFFECT")
    terminal.keys("n")
    terminal.wait_for(r"surround \(3DSurround\)")
    terminal.keys("t")
    terminal.wait_for(r"surround \(MegaBass, mode 1\)")
    terminal.keys("m")
    terminal.wait_for(r"surround \(MegaBass, mode 2\)")
    terminal.keys("n", "v", "v")
    terminal.wait_for(r"dialogue \(voice 2\)")
    terminal.keys("V")
    terminal.wait_for(r"dialogue \(voice 1\.5\)")
    terminal.keys("m")
    terminal.wait_for(r"only surround of type MegaBass has modes")
    terminal.keys("l")
    terminal.wait_for(r"loudness as it is")
    terminal.keys("-")
    terminal.wait_for(r"volume -2 dB")
    terminal.keys("+")
    terminal.wait_for(r"volume 0 dB")
    terminal.keys("Space")
    before_s = position_s(terminal.wait_for(r"paused"))
    terminal.keys("PageDown")
    end = time.monotonic() + PATIENCE_S
    while position_s(terminal.screen()) < before_s + 59 and time.monotonic() < end:
        time.sleep(0.05)
    after_s = position_s(terminal.screen())
    assert abs(after_s - before_s - 60) <= 1, f"60 s forward led from {before_s} s to {after_s} s"
    terminal.keys("Left")
    texts = [f"{target // 60}:{target % 60:02}" for target in (after_s - 5, after_s - 4)]
    terminal.wait_for(rf"^(?:{'|'.join(texts)}) /")
    terminal.keys("Space")
    terminal.wait_for(r"^\d:\d\d / 2:00  [=.]")
    terminal.keys("q")
    screen = terminal.wait_for(r"exit=0")
    assert re.search(r"^ended at \d:\d\d; gaps \d+, clipped samples 0$", screen, re.MULTILINE), screen


def check_sizes(terminal: Terminal, program: str, music: Path):
    terminal.type(f"clear; SDL_AUDIODRIVER=dummy {program} play {music}; echo exit=$?")
    terminal.wait_for(r"q quit")
    terminal.resize(24, 4)
    small = terminal.wait_for(r"\AEFFECT|\A\d:\d\d")
    end = time.monotonic() + PATIENCE_S
    while "quit" in small and time.monotonic() < end:
        small = terminal.screen()
    assert "quit" not in small, small
    terminal.wait_for(r"^EFFECT +normalizer")
    terminal.resize(120, 40)
    terminal.wait_for(r"q quit")
    terminal.wait_for(r"LUFS +peak .* dB +[=.|]{40,}$")
    terminal.keys("C-c")
    terminal.wait_for(r"sonivex: interrupted at 0:\d\d")
    terminal.wait_for(r"exit=130")


def check_terminal_is_given_back(terminal: Terminal):
    terminal.resize(100, 30)
    terminal.type("clear; stty -a | grep -o -e ' icanon' -e ' echo ' -e 'susp = ^Z' | tr '\\n' ','")
    terminal.wait_for(r"susp = \^Z, icanon, echo ,")


def check_without_terminal(program: str, music: Path):
    """Plays with neither keys nor a screen."""
    environment = dict(os.environ, SDL_AUDIODRIVER="dummy")
    command = [program, "play", str(music), "--script", "6 e; 7 q", "--start", "30"]
    result = subprocess.run(command, env=environment, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60)
    assert result.returncode == 0, result.stderr
    assert "\033" not in result.stdout, result.stdout
    lines = result.stdout.splitlines()
    assert re.match(r"0:3[45] / 2:00  effect: normalizer ", lines[0]), lines
    assert lines[-1].startswith("ended at 0:37; gaps "), lines


def is_running(process: str) -> bool:
    """Returns whether a process still runs. One that has ended does not, even if nobody has collected it."""
    try:
        state = Path(f"/proc/{process}/stat").read_text().rpartition(")")[2].split()[0]
    except (FileNotFoundError, ProcessLookupError):
        return False
    return state != "Z"


def check_closed_terminal(program: str, music: Path, folder: Path):
    """A terminal that is closed ends the program."""
    own = folder / "own"
    own.mkdir()
    terminal = Terminal(own)
    terminal.type(f"echo $$ > {own}/shell; SDL_AUDIODRIVER=dummy {program} play {music}")
    terminal.wait_for(r"q quit")
    shell = (own / "shell").read_text().strip()
    players = subprocess.run(["ps", "-o", "pid=", "--ppid", shell], capture_output=True, text=True).stdout.split()
    assert len(players) == 1, players
    terminal.close()
    end = time.monotonic() + PATIENCE_S
    while is_running(players[0]) and time.monotonic() < end:
        time.sleep(0.05)
    alive = is_running(players[0])
    if alive:
        os.kill(int(players[0]), signal.SIGKILL)
    assert not alive, "the program outlived its terminal"


def main() -> int:
    program = sys.argv[1]
    if not shutil.which("tmux") or not shutil.which("ffmpeg"):
        print("tmux or ffmpeg is not installed")
        return NOT_INSTALLED
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        music = folder / "music.flac"
        noise = "anoisesrc=c=pink:r=48000:a=0.2:seed=1:d=120,aformat=channel_layouts=stereo"
        subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-f", "lavfi", "-i", noise, str(music)], check=True)
        check_without_terminal(program, music)
        check_closed_terminal(program, music, folder)
        terminal = Terminal(folder)
        try:
            check_keys(terminal, program, music)
            check_sizes(terminal, program, music)
            check_terminal_is_given_back(terminal)
        finally:
            terminal.close()
    print("all checks hold")
    return 0


if __name__ == "__main__":
    sys.exit(main())
