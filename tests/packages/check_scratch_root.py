#!/usr/bin/env python3
"""Makes the packages, unpacks them into a scratch root with dpkg and uses them from there.

check_scratch_root.py CPACK BUILD_FOLDER VERSION [--plugin]
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

from installed import Scratch, check_plugin, check_tool, require

SKIPPED = 77
TOOL_NEEDS = ("libgdal3", "libgeos-c1", "libfftw3-double3", "libstdc++6")
PLUGIN_NEEDS = ("qgis", "libqgis-core", "libqgis-gui", "libqt5widgets5")


def make_packages(cpack, build, folder):
    """Two makings of the same build have the same names and the same bytes."""
    environment = dict(os.environ, SOURCE_DATE_EPOCH="1763640000")
    for turn in ("first", "second"):
        subprocess.run([cpack, "--config", f"{build}/CPackConfig.cmake", "-B", str(folder / turn)], check=True,
                       env=environment, stdout=subprocess.DEVNULL, timeout=300)
    first, second = (sorted((folder / turn).glob("*.deb")) for turn in ("first", "second"))
    require([deb.name for deb in first] == [deb.name for deb in second], "the names are the same each time")
    require([deb.read_bytes() for deb in first] == [deb.read_bytes() for deb in second], "so are the bytes")
    return {deb.name.split("_")[0]: deb for deb in first}


def field(deb, name):
    return subprocess.run(["dpkg-deb", "-f", str(deb), name], check=True, capture_output=True, text=True).stdout.strip()


def check_metadata(deb, version, needs):
    require(field(deb, "Version") == version, f"{deb.name} has version {version}")
    require(field(deb, "Section") == "science", f"{deb.name} is in section science")
    require(field(deb, "Description").startswith("home ranges from animal tracking data"), f"{deb.name} says what it is")
    depends = field(deb, "Depends")
    for need in needs:
        require(need in depends, f"{deb.name} depends on {need}: {depends}")
    return depends


def check_install(cpack, build, version, components, root, folder):
    """cmake --install puts the same files below a prefix of the user's choice, and they work there."""
    cmake = str(pathlib.Path(cpack).with_name("cmake"))
    for component in components:
        subprocess.run([cmake, "--install", build, "--component", component, "--prefix", str(folder)], check=True,
                       stdout=subprocess.DEVNULL)
    installed = {str(file.relative_to(folder)) for file in folder.rglob("*") if file.is_file()}
    packaged = {str(file.relative_to(root / "usr")) for file in (root / "usr").rglob("*") if file.is_file()}
    require(installed == packaged, f"installed and packaged files: {sorted(installed ^ packaged)}")
    ran = subprocess.run([str(folder / "bin/wxl"), "--version"], check=True, capture_output=True, text=True)
    require(ran.stdout == f"wxl {version}\n", "the installed wxl runs")


def unpack(debs, root):
    """Installed by dpkg where this is root, else unpacked only: dpkg sets owners."""
    if os.geteuid() != 0:
        for deb in debs:
            subprocess.run(["dpkg-deb", "-x", str(deb), str(root)], check=True)
        return
    for folder in ("info", "updates", "triggers"):
        (root / "var/lib/dpkg" / folder).mkdir(parents=True)
    (root / "var/lib/dpkg/status").touch()
    subprocess.run(["dpkg", f"--root={root}", "--force-depends", "--log=/dev/null", "-i", *map(str, debs)], check=True,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def main():
    cpack, build, version = sys.argv[1:4]
    with_plugin = "--plugin" in sys.argv
    if not all(shutil.which(program) for program in ("dpkg", "dpkg-deb", "dpkg-shlibdeps", "gzip")):
        print("skipped: dpkg or dpkg-dev is not installed")
        return SKIPPED
    with tempfile.TemporaryDirectory(prefix="wxl-packages-") as folder:
        scratch = pathlib.Path(folder)
        debs = make_packages(cpack, build, scratch / "made")
        require(set(debs) == ({"wxl", "qgis-plugin-wxl"} if with_plugin else {"wxl"}), f"the packages: {set(debs)}")
        depends = check_metadata(debs["wxl"], version, TOOL_NEEDS)
        require("qt" not in depends and "qgis" not in depends, f"wxl needs no desktop: {depends}")
        root = scratch / "root"
        root.mkdir()
        unpack(debs.values(), root)
        place = Scratch(root)
        check_tool(place, scratch, version)
        check_install(cpack, build, version, ["wxl", "plugin"] if with_plugin else ["wxl"], root, scratch / "local")
        if with_plugin:
            check_metadata(debs["qgis-plugin-wxl"], version, PLUGIN_NEEDS)
            if shutil.which("xvfb-run") and pathlib.Path("/usr/bin/qgis.bin").exists():
                check_plugin(place, scratch)
            else:
                print("QGIS or xvfb-run is not installed: the plugin was not started")
    print("the packages hold what they must, and work from where they were unpacked")
    return 0


if __name__ == "__main__":
    sys.exit(main())
