#!/usr/bin/env python3
"""Runs every command of the guide in a scratch folder, and compares what the guide says that it prints.

check_commands.py WXL SOURCE_FOLDER

Real telemetry comes from the folder that WXL_DATA_DIR names; without it the page that needs it is skipped.

Commands are the indented lines that start with the name of a program, with a "$ " before it or not. Any other indented line
must have been printed by a command, or stand in a report that one wrote.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

SKIPPED = 77
COMMAND = re.compile(r"^(\$ )?((wxl|ogr2ogr|scripts/\S+|sudo|cmake|sh|docker|qgis|qgis_process)( .*)?)$")
# Commands that change this machine, or need what it may lack; scripts/test-packages, scripts/demo and scripts/test run them.
ELSEWHERE = re.compile(r"^(scripts/|sudo apt |cmake |sh /usr/share/|docker |qgis |qgis_process )")
# What the tester's machine decides: where the folder is.
PLACE = re.compile(r"(?<![\w.])/\S*?/wxl-guide-\w+/")


def blocks_of(page):
    """The indented blocks of a page: lists of (line number, line without the indent)."""
    block = []
    for number, line in enumerate([*page.read_text(encoding="utf-8").splitlines(), "."], start=1):
        if line.startswith("    "):
            block.append((number, line[4:].rstrip()))
        elif block:
            yield block
            block = []


def steps_of(page):
    """(line number, "run" or "told", text) in the order of the page; lines that end in a backslash go on."""
    for block in blocks_of(page):
        lines = iter(block)
        for number, line in lines:
            match = COMMAND.match(line)
            if not match:
                yield number, "told", line
                continue
            command = match.group(2)
            while command.endswith("\\"):
                command = command[:-1] + next(lines)[1].strip()
            yield number, "run", command


class Guide:
    def __init__(self, wxl, source, folder):
        self.source = source
        self.folder = folder
        self.said = []
        self.environment = dict(os.environ, PATH=f"{pathlib.Path(wxl).parent}:{os.environ['PATH']}", LC_ALL="C.UTF-8")

    def run(self, command):
        """Empty, or why the command is not as the guide says."""
        if ELSEWHERE.match(command):
            script = command.split()[0]
            known = not script.startswith("scripts/") or os.access(self.source / script, os.X_OK)
            return "" if known else "there is no such script"
        if command.endswith(" ..."):
            return ""
        ran = subprocess.run(["bash", "-c", command], cwd=self.folder, env=self.environment, text=True,
                             capture_output=True, timeout=250)
        self.said += (ran.stdout + ran.stderr).splitlines()
        return "" if ran.returncode == 0 else f"ended with {ran.returncode}: {ran.stderr}"

    def has_said(self, line):
        reports = [report.read_text(encoding="cp1252").splitlines()
                   for report in self.folder.rglob("WXL_*.txt")]
        said = {PLACE.sub("", one).strip() for lines in (self.said, *reports) for one in lines}
        return line.strip() in said

    def check(self, page):
        faults = []
        commands = 0
        for number, kind, text in steps_of(page):
            commands += kind == "run"
            fault = self.run(text) if kind == "run" else "" if self.has_said(text) else "nothing has printed this line"
            if fault:
                faults.append(f"{page.name}, line {number}: {text}\n    {fault.strip()}")
        print(f"{page.name}: {commands} commands")
        return faults


def start(guide):
    shutil.copytree(guide.source / "samples", guide.folder / "samples")


def start_readme(guide):
    start(guide)
    shutil.copy(guide.source / "samples/wolves.csv", guide.folder)


def start_options(guide):
    """The files of the examples of --help: wolves.csv and its layer, a folder of tables, one wolf's fixes, a table in metres."""
    shutil.copy(guide.source / "samples/wolves.csv", guide.folder)
    (guide.folder / "collars").mkdir()
    shutil.copy(guide.source / "samples/wolves.csv", guide.folder / "collars")
    for command in ("wxl import wolves.csv wolves.shp", "wxl import wolves.csv made.shp", "ogr2ogr -where \"animal = 'Freja'\" wolf.shp made.shp",
                    "ogr2ogr -f CSV relocs.csv made.shp -dialect sqlite -sql "
                    "\"SELECT animal AS wolf, ST_X(geometry) AS east, ST_Y(geometry) AS north FROM made\""):
        fault = guide.run(command)
        if fault:
            raise RuntimeError(command + fault)


def start_worked_example(guide):
    table = pathlib.Path(os.environ.get("WXL_DATA_DIR", "")) / "O_ASSEN-gps-2018.csv"
    if not table.exists():
        print("worked-example.md: skipped, its telemetry is not here")
        return False
    os.symlink(table.resolve(), guide.folder / "oystercatchers-2018.csv")
    return True


def start_comparing_ranges(guide):
    """The fixes of both years in one table, under one header."""
    tables = [pathlib.Path(os.environ.get("WXL_DATA_DIR", "")) / f"O_ASSEN-gps-{year}.csv" for year in (2018, 2019)]
    if not all(table.exists() for table in tables):
        print("comparing-ranges.md: skipped, its telemetry is not here")
        return False
    first, second = (table.read_text(encoding="utf-8").splitlines(keepends=True) for table in tables)
    (guide.folder / "oystercatchers.csv").write_text("".join(first + second[1:]), encoding="utf-8")
    return True


# Pages that go on where the page before them ended share a folder; pages not named here have one of their own.
TOGETHER = (("first-analysis-wxl.md", "reading-the-results.md", "settings-and-limits.md"),)
# Pages without commands, and those that need other files first.
APART = ("messages.md", "recipe-r.md", "recipe-python.md", "worked-example.md", "which-estimator.md",
         "comparing-ranges.md", "options.md")


def main():
    wxl, source = sys.argv[1], pathlib.Path(sys.argv[2]).resolve()
    if shutil.which("ogr2ogr") is None:
        print("skipped: ogr2ogr is not installed")
        return SKIPPED
    pages = source / "docs/guide"
    listed = {name for group in TOGETHER for name in group} | set(APART)
    alone = tuple((page.name,) for page in sorted(pages.glob("*.md")) if page.name not in listed)
    faults = []
    for names in (*TOGETHER, *alone, ("options.md",), ("worked-example.md", "which-estimator.md"),
                  ("comparing-ranges.md",), ("../../README.md",)):
        with tempfile.TemporaryDirectory(prefix="wxl-guide-") as folder:
            guide = Guide(wxl, source, pathlib.Path(folder))
            if names == ("options.md",):
                start_options(guide)
            elif names[0] == "worked-example.md":
                if not start_worked_example(guide):
                    continue
            elif names == ("comparing-ranges.md",):
                if not start_comparing_ranges(guide):
                    continue
            elif names == ("../../README.md",):
                start_readme(guide)
            else:
                start(guide)
            for name in names:
                faults += guide.check(pages / name)
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
