"""Lines and branches that the tests reached, by room; exit code 1 when a group of rooms is below its aim.

  coverage_by_room.py BUILD_FOLDER [--missed ROOM]

Reads what gcov says of every object file, block by block. --missed lists the lines and branches of a room that no test
reached instead.

What does not count as a branch, because nobody wrote it: the ways out of a call, back and by an exception, neither the
one nor the other; what only runs while an exception passes through (gcov marks those blocks); and what stands on a line
of braces alone, the destruction of local values. Every line counts. A line or branch of a template or of an inline
function counts as reached when any of its uses reached it.
"""

import argparse
import collections
import concurrent.futures
import json
import os
import re
import subprocess
import sys

CORE = ("platform", "engine", "isopleths", "utilities", "tracking_times", "comparison", "kde_tool", "movement", "host",
        "batch", "pictures", "results_page")
ADAPTERS = tuple("adapters/" + room for room in ("disk", "gdal", "raster", "geos", "shapefile", "ogr", "memory", "tracking", "qgis"))
AIMS = (("core", CORE, 95.0, 90.0), ("adapters", ADAPTERS, 80.0, 0.0))
FOLDERS = CORE + ("adapters", "apps")
FILES_PER_CALL = 12

SOURCE = re.compile(r"\s*-:\s*0:Source:(.*)")
LINE = re.compile(r"\s*([^:\s]+):\s*(\d+):(.*)")
BLOCK = re.compile(r"\s*(\S+):\s*\d+-block\s+\d+")
BRANCH = re.compile(r"branch\s+\d+ (?:taken (\d+)|never executed)")
EXCEPTION_ONLY = "$$$$$"
BRACES = re.compile(r"[{}();,\s]*")


class File:
    """What was reached of one source file."""

    def __init__(self):
        self.lines = {}  # number -> reached
        self.branches = {}  # (line, position in it) -> reached

    def add_line(self, number, reached):
        self.lines[number] = self.lines.get(number, False) or reached

    def add_branch(self, number, position, reached):
        key = (number, position)
        self.branches[key] = self.branches.get(key, False) or reached

    def merge(self, other):
        for number, reached in other.lines.items():
            self.add_line(number, reached)
        for (number, position), reached in other.branches.items():
            self.add_branch(number, position, reached)


class Reader:
    """Gathers the files of one report of gcov. `throws` holds (file, line, position) of the ways that exceptions take:
    the report tells them for what was run only."""

    def __init__(self, root, build, throws):
        self.root, self.build, self.throws = root, build, throws
        self.files = collections.defaultdict(File)
        self.file = None
        self.block = []
        self.start_line(0, "")

    def start_line(self, number, text):
        self.number, self.position = number, 0
        self.braces_only = BRACES.fullmatch(text.split("//")[0]) is not None
        self.start_block("")

    def start_block(self, count):
        self.end_block()
        self.counts = count != EXCEPTION_ONLY and not self.braces_only

    def end_block(self):
        if self.counts_block():
            for number, position, reached in self.block:
                self.file.add_branch(number, position, reached)
        self.block = []

    def counts_block(self):
        ways = ((self.name, number, position) for number, position, _ in self.block)
        return self.block and self.counts and not any(way in self.throws for way in ways)

    def read(self, report):
        for row in report.splitlines():
            if source := SOURCE.match(row):
                self.end_block()
                self.name = name_of(self.root, self.build, source[1])
                self.file = self.files[self.name] if is_measured(self.name) else None
            elif self.file is not None:
                self.read_row(row)
        self.end_block()

    def read_row(self, row):
        if branch := BRANCH.match(row):
            self.block.append((self.number, self.position, branch[1] not in (None, "0")))
            self.position += 1
        elif block := BLOCK.match(row):
            self.start_block(block[1])
        elif line := LINE.match(row):
            self.start_line(int(line[2]), line[3])
            if line[1] != "-" and self.number > 0:
                self.file.add_line(self.number, line[1] not in ("#####", "====="))


def name_of(root, build, source):
    return os.path.relpath(os.path.normpath(os.path.join(build, source)), root)


def is_measured(name):
    return name.split("/")[0] in FOLDERS


def gcov(root, build, notes, *options):
    call = ["gcov", "--branch-probabilities", "--branch-counts", "--relative-only", "--source-prefix", root, "--stdout",
            *options, *notes]
    told = subprocess.run(call, cwd=build, capture_output=True, text=True, errors="replace")
    return told.stdout or sys.exit(told.stderr)


def ways_of_exceptions(root, build, notes):
    throws = set()
    for document in gcov(root, build, notes, "--json-format").splitlines():
        for file in json.loads(document)["files"]:
            name = name_of(root, build, file["file"])
            for line in file["lines"] if is_measured(name) else ():
                for position, branch in enumerate(line["branches"]):
                    if branch["throw"]:
                        throws.add((name, line["line_number"], position))
    return throws


def object_notes(build):
    """gcov's notes of the objects of this build; the folder can hold those of another one as well."""
    with open(os.path.join(build, "build.ninja"), encoding="utf-8") as rules:
        objects = re.findall(r"^build (\S+)\.o:", rules.read(), re.MULTILINE)
    return sorted(name + ".gcno" for name in objects if os.path.exists(os.path.join(build, name + ".gcno")))


def report_of(root, build, notes):
    reader = Reader(root, build, ways_of_exceptions(root, build, notes))
    reader.read(gcov(root, build, notes, "--all-blocks"))
    return reader.files


def measured_files(root, build):
    notes = object_notes(build)
    parts = [notes[i:i + FILES_PER_CALL] for i in range(0, len(notes), FILES_PER_CALL)]
    files = collections.defaultdict(File)
    with concurrent.futures.ProcessPoolExecutor() as pool:
        for part in pool.map(report_of, [root] * len(parts), [build] * len(parts), parts):
            for name, file in part.items():
                files[name].merge(file)
    return files


def room_of(name):
    parts = name.split("/")
    return "/".join(parts[:2]) if parts[0] in ("adapters", "apps") else parts[0]


def counts_of(files):
    """By room: lines reached, lines, branches reached, branches."""
    rooms = collections.defaultdict(lambda: [0, 0, 0, 0])
    for name, file in files.items():
        counts = (sum(file.lines.values()), len(file.lines), sum(file.branches.values()), len(file.branches))
        for i, count in enumerate(counts):
            rooms[room_of(name)][i] += count
    return rooms


def percent(reached, total):
    return 100.0 * reached / total if total else 100.0


def line_of(name, sums):
    lines, branches = percent(sums[0], sums[1]), percent(sums[2], sums[3])
    return (f"{name:18}{lines:7.1f} % of {sums[1]:6} lines {branches:7.1f} % of {sums[3]:6} branches", lines, branches)


def print_rooms(rooms):
    """The table; whether every aim is met."""
    for name in sorted(rooms):
        print(line_of(name, rooms[name])[0])
    all_met = True
    for name, members, lines_aim, branches_aim in AIMS:
        sums = [sum(rooms[room][i] for room in members if room in rooms) for i in range(4)]
        text, lines, branches = line_of(name, sums)
        met = sums[1] > 0 and lines >= lines_aim and branches >= branches_aim
        all_met = all_met and met
        aim = f"aim {lines_aim:.0f} %" + (f" and {branches_aim:.0f} %" if branches_aim else "")
        print(f"{text}   {aim}: {'met' if met else 'MISSED'}")
    return all_met


def print_missed(files, room):
    for name in sorted(files):
        if room_of(name) != room:
            continue
        for number in sorted(number for number, reached in files[name].lines.items() if not reached):
            print(f"{name}:{number}: line not reached")
        for number, position in sorted(key for key, reached in files[name].branches.items() if not reached):
            if files[name].lines.get(number):
                print(f"{name}:{number}: branch {position} not taken")


def main():
    parser = argparse.ArgumentParser(description="Lines and branches that the tests reached, by room.")
    parser.add_argument("build")
    parser.add_argument("--missed", metavar="ROOM")
    options = parser.parse_args()
    root = os.path.realpath(os.path.join(os.path.dirname(__file__), ".."))
    files = measured_files(root, os.path.realpath(options.build))
    if options.missed:
        print_missed(files, options.missed)
        return 0
    return 0 if print_rooms(counts_of(files)) else 1


if __name__ == "__main__":
    sys.exit(main())
