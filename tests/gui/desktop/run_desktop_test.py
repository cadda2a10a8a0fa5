#!/usr/bin/env python3
"""End to end in the real desktop under a virtual display: the plugin's outputs are those of the command line tool.

run_desktop_test.py WXL PLUGIN_FOLDER SCREENSHOT_FOLDER [DRIVER]
"""
import filecmp
import pathlib
import re
import subprocess
import sys
import tempfile

from launch_desktop import ROOT, SKIPPED, is_installed, run_in_desktop


TIMES = re.compile(r"begun [^·<]* · finished [^<]*")


def files_of(folder):
    return {p.relative_to(folder): p for p in sorted(folder.rglob("*")) if p.is_file() and not p.name.startswith(".")}


def compare(expected, actual):
    """Names of files that differ. Reports carry the time of the run in two lines, pages in one, and the folder."""
    differing = []
    left, right = files_of(expected), files_of(actual)
    for name in sorted(set(left) | set(right)):
        if name not in left or name not in right:
            differing.append(f"{name}: only in one of the two")
        elif name.suffix == ".txt":
            texts = []
            for path, folder in ((left[name], expected), (right[name], actual)):
                lines = path.read_bytes().decode("cp1252").replace(str(folder), "FOLDER").split("\r\n")
                texts.append([l for l in lines if not l.startswith(("Start time: ", "Finish time: "))])
            if texts[0] != texts[1]:
                differing.append(f"{name}: " + str([p for p in zip(*texts) if p[0] != p[1]][:3]))
        elif name.suffix == ".html":
            pages = [TIMES.sub("", path.read_text(encoding="utf-8")).replace(str(folder), "FOLDER")
                     for path, folder in ((left[name], expected), (right[name], actual))]
            if pages[0] != pages[1]:
                differing.append(f"{name}: " + str([p for p in zip(*(t.split("\n") for t in pages)) if p[0] != p[1]][:3]))
        elif not filecmp.cmp(left[name], right[name], shallow=False):
            differing.append(f"{name}: bytes differ")
    return differing


def main():
    wxl, plugins, shots = sys.argv[1:4]
    driver = sys.argv[4] if len(sys.argv) > 4 else "drive.py"
    if not is_installed():
        print("skipped: QGIS or xvfb-run is not installed")
        return SKIPPED
    with tempfile.TemporaryDirectory() as folder:
        scratch = pathlib.Path(folder)
        fixes = scratch / "fixes.shp"
        subprocess.run([wxl, "-q", "import", str(ROOT / "samples" / "wolves.csv"), str(fixes)], check=True)
        expected, actual = scratch / "expected", scratch / "actual"
        actual.mkdir()
        subprocess.run([wxl, "-q", "kde", str(fixes), "--id-field", "animal", "--out", str(expected), "--prefix", "W",
                        "--cell-size", "100", "--bandwidth", "href", "--extent", "min", "--isopleths", "95,50",
                        "--polygons", "--independence", "--html"], check=True, stdout=subprocess.DEVNULL)
        boxes = run_in_desktop(driver, fixes, plugins, shots, scratch, name="desktop", output=str(actual))
        if boxes is None:
            return 1
        if boxes[-1:] != [["Status", "Processing complete."]]:
            print("unexpected message boxes:", boxes)
            return 1
        differing = compare(expected, actual)
        for name in ("WXL_KDE_ANALYSIS.html", "WXL_KDE_SUMMARY.csv"):
            if not (actual / name).is_file():
                differing.append(f"{name}: not written")
        print("\n".join(differing) or f"{len(files_of(actual))} files of the desktop equal those of wxl kde")
        return 1 if differing else 0


if __name__ == "__main__":
    sys.exit(main())
