#!/usr/bin/env python3
"""Runs the script of a recipe page, and compares what the page says that it prints.

check_recipe.py WXL SOURCE_FOLDER python|r
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

SKIPPED = 77
# The interpreter, how it is asked whether its packages are there, and the end of a script's name.
LANGUAGES = {
    "python": ("/usr/bin/python3", "import geopandas, pandas, rasterio", "-c", ".py"),
    "r": ("Rscript", "library(jsonlite); library(sf); library(terra)", "-e", ".R"),
}


def fenced(page, language):
    return re.findall(rf"^```{language}\n(.*?)^```$", page, re.S | re.M)


def main():
    wxl, source, language = sys.argv[1], pathlib.Path(sys.argv[2]), sys.argv[3]
    interpreter, packages, expression, suffix = LANGUAGES[language]
    program = shutil.which(interpreter)
    if program is None or subprocess.run([program, expression, packages], capture_output=True).returncode:
        print(f"skipped: {interpreter} or a package of \"{packages}\" is not installed")
        return SKIPPED
    page = (source / f"docs/guide/recipe-{language}.md").read_text(encoding="utf-8")
    with tempfile.TemporaryDirectory(prefix="wxl-recipe-") as folder:
        shutil.copytree(source / "samples", pathlib.Path(folder) / "samples")
        script = pathlib.Path(folder) / f"recipe{suffix}"
        script.write_text("".join(fenced(page, language)), encoding="utf-8")
        environment = dict(os.environ, PATH=f"{pathlib.Path(wxl).parent}:{os.environ['PATH']}", LC_ALL="C.UTF-8")
        ran = subprocess.run([program, str(script)], cwd=folder, env=environment, text=True, capture_output=True, timeout=250)
    if ran.returncode:
        print(f"the recipe ended with {ran.returncode}\n{ran.stdout}{ran.stderr}")
        return 1
    printed = [" ".join(line.split()) for line in ran.stdout.splitlines()]
    told = [" ".join(line.split()) for block in fenced(page, "text") for line in block.splitlines()]
    missing = [line for line in told if line not in printed]
    if missing or not told:
        print("the recipe does not print:", *missing, "but:", *ran.stdout.splitlines(), sep="\n")
        return 1
    print(f"{len(told)} lines are printed as the page says")
    return 0


if __name__ == "__main__":
    sys.exit(main())
