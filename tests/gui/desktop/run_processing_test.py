#!/usr/bin/env python3
"""The algorithms in the toolbox of the real desktop.

run_processing_test.py WXL PLUGIN_FOLDER SCREENSHOT_FOLDER
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
    with tempfile.TemporaryDirectory() as folder:
        scratch = pathlib.Path(folder)
        fixes = scratch / "fixes.shp"
        subprocess.run([wxl, "-q", "import", str(ROOT / "samples" / "wolves.csv"), str(fixes)], check=True)
        boxes = run_in_desktop("drive_processing.py", fixes, plugins, shots, scratch, name="processing",
                               output=str(scratch / "ranges"))
        if boxes:
            print("unexpected message boxes:", boxes)
        return 0 if boxes == [] else 1


if __name__ == "__main__":
    sys.exit(main())
