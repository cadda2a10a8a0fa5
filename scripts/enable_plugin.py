#!/usr/bin/env python3
"""Enables a C++ plugin in the default profile of QGIS: enable_plugin.py PROFILES FOLDER LIBRARY"""
import configparser
import pathlib
import sys


def enable(profiles, folder, library):
    file = pathlib.Path(profiles) / "profiles" / "default" / "QGIS" / "QGIS3.ini"
    settings = configparser.ConfigParser(interpolation=None, delimiters=("=",), strict=False)
    settings.optionxform = str
    if file.exists():
        settings.read(file, encoding="utf-8")
    for section in ("Plugins", "plugins"):
        if not settings.has_section(section):
            settings.add_section(section)
    settings["Plugins"][library] = "true"
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
    enable(*sys.argv[1:4])
