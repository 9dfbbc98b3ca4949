"""Checks `sonivex play` on a terminal that nobody reads, on a stopped one, and in the background of a shell.

Usage: check_stuck.py PROGRAM
Exit codes: 0 all checks hold, 1 one does not, 77 ffmpeg is not installed.
"""
import fcntl
import os
import pty
import select
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import termios
import time
from pathlib import Path

TIOCGPTN = 0x80045430  # of Linux; Python has its name since 3.13
NOT_INSTALLED = 77
PATIENCE_S = 15.0  # for a program to end; a busy machine is slow
PLAYING_S = 2.0  # until the program certainly plays
LEAVE_SCREEN = b"\033[?1049l"


def music(folder: Path, seconds: int) -> Path:
    path = folder / f"music{seconds}.flac"
    noise = f"anoisesrc=c=pink:r=48000:a=0.2:seed=1:d={seconds},aformat=channel_layouts=stereo"
    subprocess.run(["ffmpeg", "-y", "-nostdin", "-v", "error", "-f", "lavfi", "-i", noise, str(path)], check=True)
    return path


class Player:
    """A program that plays on a terminal of its own."""

    def __init__(self, program: str, path: Path, is_stuck: bool, in_background: bool = False):
        go, wait = os.pipe()[::-1]
        self.pid, self.terminal = pty.fork()
        if self.pid == 0:
            os.read(wait, 1)
            command = [program, "play", str(path)]
            environment = dict(os.environ, SDL_AUDIODRIVER="dummy")
            if in_background:
                run_in_background(command, environment)
            os.execve(program, command, environment)
        if is_stuck:
            self.fill()
        os.write(go, b"g")
        os.close(go)
        os.close(wait)

    def fill(self):
        """Writes to the terminal until it takes nothing more."""
        number = struct.unpack("I", fcntl.ioctl(self.terminal, TIOCGPTN, bytes(4)))[0]
        writer = os.open(f"/dev/pts/{number}", os.O_WRONLY | os.O_NONBLOCK | os.O_NOCTTY)
        for size in (4096, 1):
            try:
                while True:
                    os.write(writer, b"x" * size)
            except BlockingIOError:
                pass
        os.close(writer)

    def press(self, keys: bytes):
        os.write(self.terminal, keys)

    def send(self, number: int):
        os.kill(self.pid, number)

    def read(self, seconds: float) -> bytes:
        """Reads what the terminal shows for so long, or until the program has ended."""
        shown = b""
        end = time.monotonic() + seconds
        while (left := end - time.monotonic()) > 0:
            if not select.select([self.terminal], [], [], left)[0]:
                break
            try:
                shown += os.read(self.terminal, 65536)
            except OSError:  # nobody has the terminal open any more
                break
        return shown

    def exit_code(self) -> int:
        """Waits until the program ends, without reading its terminal."""
        end = time.monotonic() + PATIENCE_S
        while time.monotonic() < end:
            pid, status = os.waitpid(self.pid, os.WNOHANG)
            if pid != 0:
                os.close(self.terminal)
                return os.waitstatus_to_exitcode(status)
            time.sleep(0.05)
        self.send(signal.SIGKILL)
        os.waitpid(self.pid, 0)
        raise AssertionError("the program does not end")


def run_in_background(command: list, environment: dict):
    """Runs a command as a shell does for "command &", and ends with 1 if it stops."""
    child = os.fork()
    if child == 0:
        os.setpgid(0, 0)
        os.execve(command[0], command, environment)
    status = os.waitpid(child, os.WUNTRACED)[1]
    if os.WIFSTOPPED(status):
        os.kill(child, signal.SIGKILL)
        os._exit(1)
    os._exit(os.waitstatus_to_exitcode(status))


def check_end_of_file(program: str, folder: Path):
    assert Player(program, music(folder, 2), is_stuck=True).exit_code() == 0


def check_signal(program: str, folder: Path):
    for number, code in ((signal.SIGTERM, 143), (signal.SIGINT, 130)):
        player = Player(program, music(folder, 120), is_stuck=True)
        time.sleep(PLAYING_S)
        player.send(number)
        assert player.exit_code() == code


def check_quit(program: str, folder: Path):
    player = Player(program, music(folder, 120), is_stuck=True)
    time.sleep(PLAYING_S)
    player.press(b"q")
    assert player.exit_code() == 0


def check_reading_begins_late(program: str, folder: Path):
    """A terminal that is read again shows a whole screen and is given back."""
    player = Player(program, music(folder, 120), is_stuck=True)
    time.sleep(PLAYING_S)
    shown = player.read(2.0)
    assert b"EFFECT    normalizer" in shown and b"q quit" in shown, shown[-3000:]
    player.press(b"q")
    shown = player.read(PATIENCE_S)
    assert LEAVE_SCREEN in shown and b"ended at 0:0" in shown, shown[-3000:]
    assert player.exit_code() == 0


def check_keys_of_the_terminal(program: str, folder: Path):
    """Ctrl-S does not stop the screen, and Ctrl-\\ does not end the program with the terminal as it is."""
    player = Player(program, music(folder, 120), is_stuck=False)
    before = termios.tcgetattr(player.terminal)
    assert b"q quit" in player.read(PLAYING_S)
    player.press(b"\x13")
    player.read(0.5)
    assert b"EFFECT    normalizer" in player.read(1.0), "Ctrl-S has stopped the screen"
    player.press(b"\x1c")
    assert b"EFFECT    normalizer" in player.read(1.0), "Ctrl-\\ has ended the program"
    player.press(b"q")
    # The terminal is asked while the program or this one still has it open.
    shown = player.read(PATIENCE_S)
    assert b"ended at 0:0" in shown, shown[-3000:]
    assert termios.tcgetattr(player.terminal) == before
    assert player.exit_code() == 0


def check_background(program: str, folder: Path):
    player = Player(program, music(folder, 2), is_stuck=False, in_background=True)
    shown = player.read(PATIENCE_S)
    assert b"ended at 0:0" in shown and b"\033" not in shown, shown
    assert player.exit_code() == 0, "the program was stopped"


def main() -> int:
    if not shutil.which("ffmpeg"):
        print("ffmpeg is not installed")
        return NOT_INSTALLED
    program = os.path.abspath(sys.argv[1])
    failures = 0
    checks = (check_end_of_file, check_signal, check_quit, check_reading_begins_late, check_keys_of_the_terminal, check_background)
    with tempfile.TemporaryDirectory() as name:
        for check in checks:
            try:
                check(program, Path(name))
            except AssertionError as error:
                failures += 1
                print(f"{check.__name__}: {error}")
    print(f"{failures} checks fail" if failures else "all checks hold")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
