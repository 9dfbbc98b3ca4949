"""What the program's own help says: the commands, and the options of each."""

import re
import subprocess


def help_of(program, *command):
    """Returns the text that --help prints."""
    return subprocess.run([program, *command, "--help"], check=True, stdout=subprocess.PIPE, text=True).stdout


def commands(program):
    """Returns the names of all commands."""
    listed = help_of(program).split("Subcommands:\n", 1)[1]
    names = re.findall(r"^  (\w+) ", listed, re.MULTILINE)
    if len(names) < 8:
        raise ValueError("the help lists too few commands")
    return names


def options(program, *command):
    """Returns the spellings of all options, with their dashes."""
    lines = re.findall(r"^  (-[-\w,]+)", help_of(program, *command), re.MULTILINE)
    found = [name for line in lines for name in line.split(",")]
    if not found:
        raise ValueError("the help lists no option")
    return found
