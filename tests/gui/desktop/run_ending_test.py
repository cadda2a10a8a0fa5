#!/usr/bin/env python3
"""The real desktop, ended in the middle of a run by a signal or by closing it, leaves no lock.

run_ending_test.py WXL PLUGIN_FOLDER SCREENSHOT_FOLDER
"""
import pathlib
import subprocess
import sys
import tempfile

from launch_desktop import ROOT, SKIPPED, is_installed, run_in_desktop


def main():
    wxl, plugins, shots = sys.argv[1:4]
    if not is_installed():
        print("skipped: QGIS or xvfb-run is not installed")
        return SKIPPED
    for how in ("signal", "exit"):
        with tempfile.TemporaryDirectory() as folder:
            scratch = pathlib.Path(folder)
            fixes, output, marker = scratch / "fixes.shp", scratch / "out", scratch / "marker"
            output.mkdir()
            subprocess.run([wxl, "-q", "import", str(ROOT / "samples" / "wolves.csv"), str(fixes)], check=True)
            # How it ends is the desktop's affair; what it leaves is ours.
            try:
                run_in_desktop("drive_ending.py", fixes, plugins, shots, scratch, name=f"desktop-ending-{how}",
                               output=str(output), marker=str(marker), how=how)
            except FileNotFoundError:
                pass  # it was gone before it told its message boxes
            if not marker.exists():
                print(f"{how}: the run did not begin")
                return 1
            left = sorted(p.name for p in output.iterdir())
            print(f"{how}: {left}")
            if ".wxl_run.lock" in left:
                print(f"{how}: the lock was left")
                return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
