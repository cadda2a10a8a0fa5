#!/usr/bin/env python3
"""The algorithms in the real qgis_process: what they write is what the command line tool writes.

run_process_test.py WXL PLUGIN_FOLDER SCREENSHOT_FOLDER
"""
import csv
import json
import os
import pathlib
import subprocess
import sys
import tempfile

from launch_desktop import ROOT, SKIPPED
from run_desktop_test import compare, files_of

sys.path.insert(0, str(ROOT / "scripts"))
from enable_plugin import enable  # noqa: E402


def program():
    """Debian's qgis_process hands an option of the desktop on to the program itself, which does not know it."""
    return next((p for p in ("/usr/bin/qgis_process.bin", "/usr/bin/qgis_process") if os.path.exists(p)), None)


def process(scratch, *arguments, expect=0):
    """Runs qgis_process in a profile and without a screen of its own; returns what it printed."""
    environment = dict(os.environ, PATH="/usr/bin:/bin", QT_QPA_PLATFORM="offscreen", HOME=str(scratch / "home"),
                       XDG_RUNTIME_DIR=str(scratch), XDG_DATA_HOME=str(scratch / "data"),
                       QGIS_CUSTOM_CONFIG_PATH=str(scratch / "config"))
    done = subprocess.run([program(), *arguments], env=environment, capture_output=True, text=True, timeout=120)
    if (done.returncode == 0) != (expect == 0):
        raise AssertionError(f"qgis_process {arguments}: exit {done.returncode}\n{done.stdout}\n{done.stderr}")
    return done.stdout + done.stderr


def check(condition, what):
    if not condition:
        raise AssertionError(what)


def main():
    wxl, plugins = sys.argv[1:3]
    if program() is None:
        print("skipped: qgis_process is not installed")
        return SKIPPED
    with tempfile.TemporaryDirectory() as folder:
        scratch = pathlib.Path(folder)
        (scratch / "home").mkdir()
        library = scratch / "data" / "wxl" / "qgis-plugins" / "libwxltools.so"
        library.parent.mkdir(parents=True)
        library.symlink_to(pathlib.Path(plugins).resolve() / "libwxltools.so")
        enable(scratch / "config", str(library.parent), "libwxltools", ROOT / "apps" / "qgis_plugin" / "wxl_processing")

        listed = process(scratch, "list")
        for name in ("kerneldensity", "statistics", "observationfields", "removeduplicates"):
            check(f"wxltools:{name}" in listed, f"{name} is listed: {listed}")

        fixes = scratch / "fixes.shp"
        subprocess.run([wxl, "-q", "import", str(ROOT / "samples" / "wolves.csv"), str(fixes)], check=True)
        expected, actual = scratch / "expected", scratch / "actual"
        subprocess.run([wxl, "-q", "kde", str(fixes), "--id-field", "animal", "--out", str(expected), "--cell-size",
                        "200", "--bandwidth", "bcv", "--extent", "min", "--isopleths", "95,50", "--polygons",
                        "--html", "--answer", "yes"], check=True, stdout=subprocess.DEVNULL)
        said = process(scratch, "run", "wxltools:kerneldensity", "--", f"INPUT={fixes}", "ID_FIELD=animal",
                       "CELL_SIZE=200", "METHOD=2", "EXTENT_MODE=1", "ISOPLETHS=95,50", "POLYGONS=true",
                       "HTML=true", f"OUTPUT={actual}")
        check("DISTRIBUTIONS:" in said, said)
        differing = compare(expected, actual)
        check(not differing, "\n".join(differing))

        table = scratch / "statistics.csv"
        process(scratch, "run", "wxltools:statistics", "--", f"INPUT={fixes}", "ID_FIELD=animal", f"OUTPUT={table}")
        numbers = json.loads(subprocess.run([wxl, "stats", str(fixes), "--id-field", "animal", "--json"], check=True,
                                            capture_output=True, text=True).stdout)
        with open(table, newline="", encoding="utf-8") as rows:
            read = list(csv.DictReader(rows))
        check([row["id"] for row in read] == [one["id"] for one in numbers], "the animals of the table")
        for row, one in zip(read, numbers):
            check(abs(float(row["href"]) - one["href"]) < 1e-9 * one["href"], f"href of {row['id']}")

        refused = process(scratch, "run", "wxltools:kerneldensity", "--", f"INPUT={fixes}", "ID_FIELD=animal",
                          f"OUTPUT={actual}", expect=1)
        check("Give the cell size in map units." in refused, refused)
        print(f"{len(files_of(actual))} files of qgis_process equal those of wxl kde")
    return 0


if __name__ == "__main__":
    sys.exit(main())
