#!/usr/bin/env python3
"""Movement commands and track player in the real desktop: their outputs are those of the command line tool.

run_travel_test.py WXL PLUGIN_FOLDER SCREENSHOT_FOLDER
"""
import filecmp
import pathlib
import subprocess
import sys
import tempfile

from launch_desktop import ROOT, SKIPPED, is_installed, run_in_desktop

LEGS = 24


def copy_shapefile(source, target):
    for part in source.parent.glob(source.stem + ".*"):
        target.with_suffix(part.suffix).write_bytes(part.read_bytes())
    return target


def expected_outputs(wxl, fixes, scratch):
    """The layer after each movement command of the command line, and the rows left at the end."""
    stages = {}
    at = fixes
    for stage, command in (("fields", ["obs-fields", "--yes"]), ("time2", ["remove-duplicates", "--by", "time2"]),
                           ("xy", ["remove-duplicates", "--by", "xy"])):
        at = copy_shapefile(at, scratch / f"{stage}.shp")
        # The desktop takes all animals as one.
        subprocess.run([wxl, "-q", command[0], str(at), *command[1:], "--answer", "animals=yes"], check=True,
                       stdout=subprocess.DEVNULL)
        stages[stage] = str(at)
    return stages


def main():
    wxl, plugins, shots = sys.argv[1:4]
    if not is_installed():
        print("skipped: QGIS or xvfb-run is not installed")
        return SKIPPED
    with tempfile.TemporaryDirectory() as folder:
        scratch = pathlib.Path(folder)
        fixes, track = scratch / "fixes.shp", scratch / "track.shp"
        subprocess.run([wxl, "-q", "import", str(ROOT / "samples" / "wolves.csv"), str(fixes)], check=True)
        stages = expected_outputs(wxl, fixes, scratch)
        rows = (scratch / "xy.dbf").read_bytes()[4:8]
        expected = scratch / "expected-track.shp"
        subprocess.run([wxl, "-q", "track", stages["xy"], str(expected), "--where", f"FID <= {LEGS}"], check=True,
                       stdout=subprocess.DEVNULL)
        boxes = run_in_desktop("drive_travel.py", fixes, plugins, shots, scratch, name="desktop-travel",
                               expected=stages, rows=int.from_bytes(rows, "little"), legs=LEGS, track=str(track))
        if boxes is None:
            return 1
        for suffix in (".shp", ".shx", ".dbf", ".prj"):
            if not filecmp.cmp(expected.with_suffix(suffix), track.with_suffix(suffix), shallow=False):
                print(f"the saved track differs from that of wxl track: {suffix}")
                return 1
        print("the saved track equals that of wxl track, byte for byte")
        return 0


if __name__ == "__main__":
    sys.exit(main())
