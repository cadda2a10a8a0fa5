"""What the tests of batches share: small studies, calls of wxl, and snapshots of output folders."""
import json
import os
import pathlib
import random
import re
import subprocess
import tempfile

WXL = os.environ.get("WXL_PROGRAM", "wxl")
# Many small files are flushed to the disk: in memory that costs nothing.
FAST = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None


def scratch_folder():
    return tempfile.TemporaryDirectory(prefix="wxl-batch-", dir=FAST)


def wxl(*arguments, **more):
    return subprocess.run([WXL, *map(str, arguments)], capture_output=True, text=True, timeout=240, **more)


def make_study(folder, name, animals, fixes, text_ids=False, lonely=()):
    """Imports a layer of `animals` animals of `fixes` fixes each; those in `lonely` have one. Returns its path."""
    chance = random.Random(17)
    table = pathlib.Path(folder) / f"{name}.csv"
    with open(table, "w", encoding="utf-8") as out:
        out.write("a,x,y\n")
        for animal in range(animals):
            label = f"O'Brien {animal:03d}" if text_ids else 100 + animal
            for _ in range(1 if animal in lonely else fixes):
                out.write(f"{label},{500000 + 900 * animal + chance.gauss(0, 400):.2f},"
                          f"{6000000 + chance.gauss(0, 300):.2f}\n")
    layer = table.with_suffix(".gpkg" if not text_ids else ".shp")
    shape = table.with_suffix(".shp")
    done = wxl("import", table, shape, "--id", "a", "--x", "x", "--y", "y", "--from-crs", "EPSG:32633")
    assert done.returncode == 0, done.stderr
    if text_ids:
        return layer
    # An ID column of whole numbers, which import does not make.
    subprocess.run(["ogr2ogr", "-f", "GPKG", "-dialect", "sqlite", "-sql",
                    f"SELECT CAST(animal AS integer) AS animal, geometry FROM {name}", "-nln", name, layer, shape],
                   check=True, capture_output=True)
    return layer


def tracks_of(animals, fixes, lonely=()):
    """Animal, x, y and number of the fix of tracks that come back to where they began; those in `lonely` have one."""
    chance = random.Random(29)
    for animal in range(animals):
        x = y = 0.0
        for fix in range(1 if animal in lonely else fixes):
            x, y = 0.8 * x + chance.gauss(0, 200), 0.8 * y + chance.gauss(0, 120)
            yield f"T{animal}", round(500000 + 700 * animal + x, 2), round(6000000 + y, 2), fix


def make_tracks(folder, name, animals, fixes, lonely=()):
    """Tracks in a table. Returns its path."""
    table = pathlib.Path(folder) / f"{name}.csv"
    with open(table, "w", encoding="utf-8") as out:
        out.write("animal,x,y,timestamp\n")
        for animal, x, y, fix in tracks_of(animals, fixes, lonely):
            out.write(f"{animal},{x:.2f},{y:.2f},2020-01-{1 + fix // 12:02d}T{2 * (fix % 12):02d}:00:00Z\n")
    return table


def make_numbered_tracks(folder, name, animals, fixes, nameless):
    """Tracks whose times are seconds of no calendar, and points that belong to no animal. Returns the layer's path."""
    points = list(tracks_of(animals, fixes)) + [(None, 500000.5, 6000000.5, fix) for fix in range(nameless)]
    layer = pathlib.Path(folder) / f"{name}.geojson"
    layer.write_text(json.dumps({
        "type": "FeatureCollection",
        "crs": {"type": "name", "properties": {"name": "urn:ogc:def:crs:EPSG::32633"}},
        "features": [{"type": "Feature", "properties": {"animal": animal, "seconds": 7200 * fix},
                      "geometry": {"type": "Point", "coordinates": [x, y]}} for animal, x, y, fix in points]}))
    return layer


def timeless(name, text):
    """A report, or its page, without the times of the run."""
    if name == "WXL_KDE_ANALYSIS.txt":
        return re.sub(rb"(Start|Finish) time: [^\r]*", rb"\1 time:", text)
    if name.endswith("_ANALYSIS.html"):
        return re.sub(rb"(begun|finished) \d+/\d+/\d+ \d+:\d+:\d+ [AP]M", rb"\1", text)
    return text


def snapshot(folder):
    """Bytes of every file of an output folder by its name but the batch's own folder; report and page without times."""
    found = {}
    folder = pathlib.Path(folder)
    for file in sorted(folder.rglob("*")):
        name = str(file.relative_to(folder))
        if file.is_file() and not name.startswith("wxl_batch/"):
            found[name] = timeless(file.name, file.read_bytes())
    return found


def differences(wanted, found):
    """Names that one of two snapshots lacks, or whose bytes differ."""
    return sorted(name for name in wanted.keys() | found.keys() if wanted.get(name) != found.get(name))
