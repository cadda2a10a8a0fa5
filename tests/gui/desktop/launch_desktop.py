"""Starts the real desktop with the plugin under a virtual display, and runs a driver in it."""
import json
import os
import pathlib
import shutil
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[2]
SKIPPED = 77

sys.path.insert(0, str(ROOT / "scripts"))
import enable_plugin  # noqa: E402


def is_installed():
    return shutil.which("xvfb-run") is not None and pathlib.Path("/usr/bin/qgis.bin").exists()


def run_in_desktop(driver, layer, plugins, shots, scratch, **setup):
    """Opens the layer with the plugin and runs the driver, which finds `setup` in SETUP; the message boxes it met, or
    None."""
    profiles = scratch / "profiles"
    enable_plugin.enable(str(profiles), plugins, "libwxltools")
    return start_desktop(driver, layer, profiles, shots, scratch, **setup)


def start_desktop(driver, layer, profiles, shots, scratch, **setup):
    """As run_in_desktop, with these profiles as they are."""
    pathlib.Path(shots).mkdir(parents=True, exist_ok=True)
    runtime = scratch / "runtime"
    runtime.mkdir(mode=0o700)
    boxes = scratch / "boxes.json"
    environment = dict(os.environ, PATH="/usr/bin:/bin", XDG_RUNTIME_DIR=str(runtime), HOME=str(scratch),
                       PYTHONPATH=str(HERE),
                       PYTHONDONTWRITEBYTECODE="1",
                       WXL_DESKTOP_TEST=json.dumps({"screenshots": shots, "boxes": str(boxes), **setup}))
    result = subprocess.run(["xvfb-run", "-a", "-s", "-screen 0 1280x1024x24", "qgis.bin", "--nologo",
                             "--noversioncheck", "--hide-browser", "--profiles-path", str(profiles), "--code",
                             str(HERE / driver), str(layer)], env=environment, timeout=300)
    if result.returncode:
        print(f"the desktop ended with {result.returncode}")
        return None
    return json.loads(boxes.read_text(encoding="utf-8"))
