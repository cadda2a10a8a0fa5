#!/usr/bin/env python3
"""scripts/install-plugin beside a QGIS of another version: it says which is older, and changes nothing.

check_install_plugin.py SOURCE_FOLDER PLUGIN_LIBRARY
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

from installed import require

SOURCE, LIBRARY = (pathlib.Path(name) for name in sys.argv[1:3])
BUILT_FOR = re.search(rb"libqgis_core\.so\.(\d+\.\d+\.\d+)", LIBRARY.read_bytes()).group(1).decode()


def install(folder, version, library=LIBRARY):
    """Runs the script with an empty home and a program qgis of that version; none when it is None."""
    programs = folder / "programs"
    programs.mkdir()
    for name in ("bash", "cp", "dirname", "grep", "head", "mkdir", "mv", "python3", "sed", "sort"):
        (programs / name).symlink_to(next(place for place in (pathlib.Path("/usr/bin") / name, pathlib.Path("/bin") / name)
                                          if place.exists()))
    if version is not None:
        qgis = programs / "qgis"
        qgis.write_text(f"#!/bin/sh\necho \"QGIS {version}-Somewhere 'Somewhere' (exported)\"\n")
        qgis.chmod(0o755)
    environment = {"HOME": str(folder / "home"), "PATH": str(programs)}
    (folder / "home").mkdir()
    return subprocess.run([str(SOURCE / "scripts/install-plugin"), "--built", str(library)], env=environment,
                          capture_output=True, text=True)


def case(version, library=LIBRARY):
    with tempfile.TemporaryDirectory() as name:
        ran = install(pathlib.Path(name), version, library)
        return ran, [str(path) for path in (pathlib.Path(name) / "home").rglob("*")]


for other, word in (("3.4.1", "older"), ("3.99.0", "newer"), ("4.0.0", "newer")):
    ran, left = case(other)
    require(ran.returncode == 1, f"QGIS {other} is refused: {ran.stdout}{ran.stderr}")
    require(f"the plugin is for QGIS {BUILT_FOR}, and the QGIS here is {other}, which is {word}" in ran.stderr, ran.stderr)
    require(left == [], f"nothing is left: {left}")
ran, left = case(BUILT_FOR)
require(ran.returncode == 0 and f"the plugin is for QGIS {BUILT_FOR}, which is the one installed here" in ran.stdout,
        ran.stdout + ran.stderr)
require(any(path.endswith("libwxltools.so") for path in left), f"the plugin is installed: {left}")
ran, left = case(None)
require(ran.returncode == 0 and 'no program "qgis" was found' in ran.stderr, ran.stdout + ran.stderr)
ran, left = case(BUILT_FOR, pathlib.Path("/bin/ls"))
require(ran.returncode == 1 and "is no plugin of QGIS" in ran.stderr and left == [], ran.stdout + ran.stderr)
