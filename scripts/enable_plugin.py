#!/usr/bin/env python3
"""Enables a C++ plugin in the default profile of QGIS: enable_plugin.py PROFILES FOLDER LIBRARY [PYTHON_PLUGIN]

PYTHON_PLUGIN: the folder of a plugin in Python that goes with it; it is copied into the profile and enabled too.
"""
import configparser
import pathlib
import shutil
import sys


def copy_python_plugin(source, profile):
    """Replaces an older copy."""
    target = profile / "python" / "plugins" / source.name
    shutil.rmtree(target, ignore_errors=True)
    shutil.copytree(source, target, ignore=shutil.ignore_patterns("__pycache__"))


def enable(profiles, folder, library, python_plugin=None):
    profile = pathlib.Path(profiles) / "profiles" / "default"
    file = profile / "QGIS" / "QGIS3.ini"
    settings = configparser.ConfigParser(interpolation=None, delimiters=("=",), strict=False)
    settings.optionxform = str
    if file.exists():
        settings.read(file, encoding="utf-8")
    for section in ("Plugins", "plugins", "PythonPlugins"):
        if not settings.has_section(section):
            settings.add_section(section)
    settings["Plugins"][library] = "true"
    if python_plugin:
        copy_python_plugin(pathlib.Path(python_plugin), profile)
        settings["PythonPlugins"][pathlib.Path(python_plugin).name] = "true"
    folders = [f for f in settings["plugins"].get("searchPathsForPlugins", "").split("|") if f]
    if folder not in folders:
        folders.append(folder)
    settings["plugins"]["searchPathsForPlugins"] = "|".join(folders)
    file.parent.mkdir(parents=True, exist_ok=True)
    new = file.with_name(file.name + ".new")
    with open(new, "w", encoding="utf-8") as out:
        settings.write(out, space_around_delimiters=False)
    new.replace(file)


if __name__ == "__main__":
    enable(*sys.argv[1:5])
