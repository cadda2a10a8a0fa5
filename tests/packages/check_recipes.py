#!/usr/bin/env python3
"""The conda recipe and the Dockerfile say what CMake and scripts/setup say: check_recipes.py SOURCE_FOLDER VERSION

Neither is built here: a version, a file name or a dependency that changes in one place only is found.
"""
import pathlib
import re
import subprocess
import sys

from installed import require

SOURCE, VERSION = pathlib.Path(sys.argv[1]), sys.argv[2]
RECIPE = (SOURCE / "packaging/conda/meta.yaml").read_text()
DOCKERFILE = (SOURCE / "packaging/docker/Dockerfile").read_text()

# What CMake asks for, as conda-forge and as Debian call it; None: comes with the system.
NAMES = {
    "CLI11": ("cli11", "libcli11-dev"),
    "FFTW": ("fftw", "libfftw3-dev"),
    "GDAL": ("libgdal-core", "libgdal-dev"),
    "GEOS_C_LIBRARY": ("geos", "libgeos-dev"),
    "GEOS_INCLUDE_DIR": ("geos", "libgeos-dev"),
    "ICU": ("icu", "libicu-dev"),
    "NETTLE": ("nettle", "nettle-dev"),
    "PROJ_LIBRARY": ("proj", "libproj-dev"),
    "PkgConfig": ("pkg-config", "pkg-config"),
    "SQLite3": ("libsqlite", "libsqlite3-dev"),
    "fmt": ("fmt", "libfmt-dev"),
    "nlohmann_json": ("nlohmann_json", "nlohmann-json3-dev"),
}


def asked_by_cmake():
    """Names that the folders of the command line tool look for."""
    found = set()
    for file in SOURCE.rglob("*"):
        parts = file.relative_to(SOURCE).parts
        if parts[0] in ("build", "tests", "bench", "fuzz") or parts[:2] == ("adapters", "qgis"):
            continue
        if file.name == "CMakeLists.txt" or file.suffix == ".cmake":
            found |= set(re.findall(r"(?:find_package|pkg_check_modules|find_path|find_library)\((\w+)", file.read_text()))
    return found


def of_recipe(section):
    block = re.search(rf"^  {section}:\n((?:    - .*\n)+)", RECIPE, re.MULTILINE).group(1)
    return {line.strip()[2:].split(" ")[0] for line in block.splitlines()} - {"{{"}


def of_setup():
    return set(re.search(r"^tool=\((.*)\)$", (SOURCE / "scripts/setup").read_text(), re.MULTILINE).group(1).split())


def of_dockerfile():
    block = re.search(r"install -y --no-install-recommends \\\n((?: {4}.*\n)+)", DOCKERFILE).group(1)
    return set(block.replace("\\", " ").split())


asked = asked_by_cmake()
require(asked == set(NAMES), f"CMake looks for these: {sorted(asked ^ set(NAMES))}")
conda = {names[0] for names in NAMES.values()}
require(of_recipe("build") | of_recipe("host") == conda | {"cmake", "ninja"}, f"the recipe's packages: {conda}")
oldest_cmake = re.search(r"cmake_minimum_required\(VERSION ([0-9.]+)\)", (SOURCE / "CMakeLists.txt").read_text()).group(1)
require(f"- cmake >={oldest_cmake}\n" in RECIPE, "the recipe asks for the oldest CMake that will do")
debian = {names[1] for names in NAMES.values()} | {"g++", "cmake", "ninja-build"}
require(of_setup() == debian, f"scripts/setup tool: {sorted(of_setup() ^ debian)}")
require(of_dockerfile() == debian | {"dpkg-dev", "file", "gzip"}, f"the Dockerfile's packages: {sorted(of_dockerfile())}")

require(f'{{% set version = "{VERSION}" %}}' in RECIPE, "the recipe's version")
for line in (f'image.version="{VERSION}"', f"packages/wxl_{VERSION}_*.deb", f"wxl:{VERSION} "):
    require(line in DOCKERFILE, f"the Dockerfile's version: {line}")
require("USER wxl" in DOCKERFILE and DOCKERFILE.index("USER wxl") < DOCKERFILE.index("ENTRYPOINT"), "an unprivileged user")
require('archive=$folder/wxl-$version.tar.gz' in (SOURCE / "scripts/release-archive").read_text() and
        "{{ name }}-{{ version }}.tar.gz" in RECIPE, "the archive's name")
require((SOURCE / re.search(r"license_file: (\S+)", RECIPE).group(1)).exists(), "the licence's file")
packages = (SOURCE / "cmake/WxlPackages.cmake").read_text()
require("wxl-demo DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/wxl/examples" in packages, "the demo is where the recipe runs it")
for target in re.findall(r"--target (\w+)", RECIPE + DOCKERFILE):
    require(target in ("wxl", "packages"), f"the target {target}")
components = re.findall(r"--component (\w+)", RECIPE)
require(components == ["wxl"], f"the installed component: {components}")

if (SOURCE / ".git").exists() and subprocess.run(["git", "--version"], capture_output=True).returncode == 0:
    ran = subprocess.run([str(SOURCE / "scripts/release-archive")], capture_output=True, text=True)
    if ran.returncode == 0:
        archive, total = ran.stdout.split()
        require(archive.endswith(f"/wxl-{VERSION}.tar.gz"), archive)
        recipe = (SOURCE / "build/release-archive/meta.yaml").read_text()
        require(f"  sha256: {total}\n" in recipe and re.fullmatch("[0-9a-f]{64}", total), "the recipe with the sum")
