#!/usr/bin/env python3
"""scripts/install-plugin for a user with an empty home: QGIS starts with the toolbar.

run_install_test.py WXL PLUGIN_FOLDER SCREENSHOT_FOLDER
"""
import os
import pathlib
import subprocess
import sys
import tempfile

from launch_desktop import ROOT, SKIPPED, is_installed, start_desktop


def main():
    wxl, plugins, shots = sys.argv[1:4]
    if not is_installed():
        print("skipped: QGIS or xvfb-run is not installed")
        return SKIPPED
    with tempfile.TemporaryDirectory() as folder:
        home = pathlib.Path(folder)
        environment = {k: v for k, v in os.environ.items() if not k.startswith("XDG_")}
        command = [str(ROOT / "scripts" / "install-plugin"), "--built", str(pathlib.Path(plugins) / "libwxltools.so")]
        # A second time: what is there is replaced.
        for _ in range(2):
            subprocess.run(command, env=dict(environment, HOME=str(home)), check=True)
        fixes = home / "fixes.shp"
        subprocess.run([wxl, "-q", "import", str(ROOT / "samples" / "wolves.csv"), str(fixes)], check=True)
        profiles = home / ".local" / "share" / "QGIS" / "QGIS3"
        boxes = start_desktop("drive_installed.py", fixes, profiles, shots, home, name="desktop-installed")
        return 0 if boxes == [] else 1


if __name__ == "__main__":
    sys.exit(main())
