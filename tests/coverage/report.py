#!/usr/bin/env python3
"""Prints how many lines and branches of each folder the tests reach, and checks the gaps.

Usage: report.py LINES.json GAPS.txt

LINES.json is what "gcovr --json" writes. GAPS.txt lists the lines that no test reaches, each with its reason:

    # reason, in one or more lines
    file: text of the line
    file: 3 x text of the line

The text is the line without its indentation. An entry excuses as many lines with this text as its number says; without one it
excuses one line. A reason that begins with "Uncounted: " is that of lines that run, but whose counts are lost; they do not
count as lines. The program fails if a folder has less than 97 % or a file less than 95 % of its lines reached, if a line that
is not reached has no entry, or if an entry excuses more or fewer lines than those with its text that are not reached.
"""
import collections
import json
import pathlib
import re
import sys
import typing

FOLDER_PERCENT = 97.0
FILE_PERCENT = 95.0

UNCOUNTED = "# Uncounted: "
ENTRY = re.compile(r"(?P<file>[^:]+): (?:(?P<lines>\d+) x )?(?P<text>.+)")


class Gap(typing.NamedTuple):
    """An entry: how many lines with its text are not reached, and whether they run uncounted."""

    lines: int
    is_uncounted: bool


def read_gaps(path):
    """Returns the entries of the list as {file: {text: Gap}}."""
    gaps = collections.defaultdict(dict)
    reason = ""
    for number, line in enumerate(pathlib.Path(path).read_text().splitlines(), 1):
        if line.startswith("#"):
            reason = reason or line
        elif not line.strip():
            reason = ""
        else:
            entry = ENTRY.fullmatch(line)
            if not entry or not reason:
                sys.exit(f"{path}:{number}: expected a reason, then 'file: text of the line'")
            text = entry["text"].strip()
            if text in gaps[entry["file"]]:
                sys.exit(f"{path}:{number}: a second entry for the same text; one entry can excuse several lines")
            gaps[entry["file"]][text] = Gap(int(entry["lines"] or 1), reason.startswith(UNCOUNTED))
    return gaps


class Count:
    """Lines and branches: how many there are, and how many were reached."""

    def __init__(self):
        self.lines = self.lines_hit = self.branches = self.branches_hit = 0

    def add(self, lines):
        self.lines += len(lines)
        self.lines_hit += sum(line["count"] > 0 for line in lines)
        branches = [branch for line in lines for branch in line["branches"]]
        self.branches += len(branches)
        self.branches_hit += sum(branch["count"] > 0 for branch in branches)

    def line_percent(self):
        return 100.0 * self.lines_hit / self.lines if self.lines else 100.0

    def branch_percent(self):
        return 100.0 * self.branches_hit / self.branches if self.branches else 100.0

    def row(self, name):
        return (f"{name:70} {self.lines_hit:6}/{self.lines:<6} {self.line_percent():6.1f} % "
                f"{self.branches_hit:6}/{self.branches:<6} {self.branch_percent():6.1f} %")


# The counts of the first line of a class are those of the members that the compiler makes.
CLASS_HEAD = re.compile(r"(class|struct) \w+( final)?( : .*)? \{")


def merged_lines(file, text):
    """Returns the lines of code, each once: a template or a kernel for several processors has several counts."""
    lines = {}
    for line in file["lines"]:
        if line.get("gcovr/noncode") or CLASS_HEAD.fullmatch(text[line["line_number"] - 1].strip()):
            continue
        seen = lines.setdefault(line["line_number"], {"count": 0, "branches": []})
        seen["count"] += line["count"]
        seen["branches"] = line["branches"] or seen["branches"]
    return lines


def main():
    report, gaps_path = sys.argv[1:]
    gaps = read_gaps(gaps_path)
    folders = collections.defaultdict(Count)
    total = Count()
    problems = []
    for file in json.loads(pathlib.Path(report).read_text())["files"]:
        name = file["file"]
        text = pathlib.Path(name).read_text().splitlines()
        lines = merged_lines(file, text)
        known = gaps.pop(name, {})
        missed = {number for number, line in lines.items() if line["count"] == 0}
        unreached = collections.Counter(text[number - 1].strip() for number in missed)
        for number in missed:
            gap = known.get(text[number - 1].strip())
            if gap and gap.is_uncounted:
                del lines[number]
        count = Count()
        for counter in (count, folders[str(pathlib.PurePosixPath(name).parent)], total):
            counter.add(lines.values())
        if count.line_percent() < FILE_PERCENT:
            problems.append(f"{name}: {count.line_percent():.1f} % of {count.lines} lines are reached")
        for number in sorted(missed):
            if text[number - 1].strip() not in known:
                problems.append(f"{name}:{number}: is not reached, and has no reason: {text[number - 1].strip()}")
        for excused, gap in sorted(known.items()):
            if unreached[excused] != gap.lines:
                problems.append(f"{gaps_path}: {name} has {unreached[excused]} unreached lines with the text '{excused}', "
                                f"but the entry excuses {gap.lines}")
    for name in sorted(gaps):
        problems.append(f"{gaps_path}: there is no {name}")

    print(f"{'folder':70} {'lines':^24} {'branches':^24}")
    for name, count in sorted(folders.items()):
        print(count.row(name))
        if count.line_percent() < FOLDER_PERCENT:
            problems.append(f"{name}/: {count.line_percent():.1f} % of {count.lines} lines are reached")
    print(total.row("all"))
    if problems:
        print(*problems, sep="\n", file=sys.stderr)
        sys.exit(1)


if __name__ == "__main__":
    main()
