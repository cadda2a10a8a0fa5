"""Studies and options as chance makes them, for tests that compare one road of a run with another."""
import csv
import json
import pathlib
import subprocess
from dataclasses import dataclass, field

# Name, EPSG code, middle and spread of the coordinates in its units, cell size that suits them.
PLACES = {
    "metres": (32633, (500000.0, 6000000.0), 400.0, 60),
    "feet": (2263, (1000000.0, 200000.0), 1500.0, 200),
    "degrees": (4326, (15.0, 54.0), 0.01, 60),
}
IDS = {
    "text": lambda i: ["O'Brien", "wölf, 2", "a b", "Ängstlich", "x-1", "x 1", "7_b1", "Z"][i],
    "whole": lambda i: [3, -1, 0, 7, 12, 1000000, 5, 100][i],
    "double": lambda i: [1.5, 2.0, -0.25, 100.125, 1e6, 3.0, 7.75, 0.5][i],
    "numeral": lambda i: ["007", "7", "1e3", "+5", "-1", "1.50", "0x10", "NaN"][i],
}


@dataclass
class Study:
    """A point layer or table, and the words that make a run of it."""
    Source: pathlib.Path
    Words: list
    Place: str
    Timed: bool
    Cell: float
    Ids: list = field(default_factory=list)


def sizes_of(chance, most):
    """How many fixes each animal has: few as a rule, now and then none, one or two."""
    return [chance.choice([0, 1, 2, 3]) if chance.random() < 0.3 else chance.randint(4, most)
            for _ in range(chance.randint(1, 8))]


def time_of(chance, style, fix):
    """Text or number of a time; now and then none, or none that can be read."""
    day, hour = fix // 6, 4 * (fix % 6)
    if chance.random() < 0.02:
        return None if style == "seconds" else chance.choice([None, "", "soon"])
    if style == "seconds":
        return 86400 * day + 3600 * hour
    return f"2020-{3 + day // 28:02d}-{1 + day % 28:02d}T{hour:02d}:{chance.randint(0, 9):02d}:00Z"


def points_of(chance, place, ids, style):
    """Rows of animal, x, y and time: tracks that come back to where they began, with points that lack something."""
    _, (x0, y0), spread, _ = PLACES[place]
    rows = []
    for i, size in enumerate(sizes_of(chance, 45)):
        x = y = 0.0
        for fix in range(size):
            x, y = 0.7 * x + chance.gauss(0, spread), 0.7 * y + chance.gauss(0, 0.6 * spread)
            rows.append([ids(i), round(x0 + i * spread + x, 7), round(y0 + y, 7), time_of(chance, style, fix)])
            if chance.random() < 0.04:
                rows.append(list(rows[-1]))
    if not rows:
        rows.append([ids(0), x0, y0, time_of(chance, style, 0)])
    for _ in range(chance.choice([0, 0, 1, 3])):
        rows.insert(chance.randint(0, len(rows)), [None, x0, y0, time_of(chance, style, 0)])
    for _ in range(chance.choice([0, 0, 0, 2])):
        rows.insert(chance.randint(0, len(rows)), [ids(0), None, None, time_of(chance, style, 0)])
    if chance.random() < 0.3:
        chance.shuffle(rows)
    return rows


def write_geojson(file, rows, code):
    features = [{"type": "Feature", "properties": {"animal": animal, "timestamp": when, "sex": "fm"[place % 2]},
                 "geometry": None if x is None else {"type": "Point", "coordinates": [x, y]}}
                for place, (animal, x, y, when) in enumerate(rows)]
    crs = {"type": "name", "properties": {"name": f"urn:ogc:def:crs:EPSG::{code}"}}
    collection = {"type": "FeatureCollection", "crs": crs, "features": features}
    file.write_text(json.dumps(collection), encoding="utf-8")


def write_table(file, rows):
    with open(file, "w", encoding="utf-8", newline="") as out:
        table = csv.writer(out)
        table.writerow(["animal", "x", "y", "timestamp", "sex"])
        for place, row in enumerate(rows):
            table.writerow(["" if cell is None else cell for cell in row] + ["fm"[place % 2]])


def converted(layer, kind):
    """The GeoJSON layer as another kind of file."""
    made = layer.with_suffix("." + kind)
    driver = {"shp": "ESRI Shapefile", "gpkg": "GPKG"}[kind]
    subprocess.run(["ogr2ogr", "-f", driver, "-nlt", "POINT", "-lco", "ENCODING=UTF-8" if kind == "shp" else "FID=fid",
                    made, layer], check=True, capture_output=True)
    layer.unlink()
    return made


def make_random_study(chance, folder, name, timed):
    """Writes a study named `name` into `folder`."""
    place = chance.choice(["metres", "metres", "feet", "degrees"])
    code, _, _, cell = PLACES[place]
    kind = chance.choice(["shp", "gpkg", "geojson", "csv"])
    style = chance.choice(["text", "text", "seconds"]) if timed else "text"
    if kind == "csv" or place == "degrees":
        style = "text"
    ids = IDS[chance.choice(list(IDS))]
    rows = points_of(chance, place, ids, style)
    source = pathlib.Path(folder) / f"{name}.{'csv' if kind == 'csv' else 'geojson'}"
    words = ["--id", "animal"] if kind == "csv" else ["--id-field", "animal"]
    if kind == "csv":
        write_table(source, rows)
        words += ["--x", "x", "--y", "y", "--from-crs", f"EPSG:{code}"]
        words += ["--time", "timestamp"] if timed else ["--no-time"]
    else:
        write_geojson(source, rows, code)
        source = source if kind == "geojson" else converted(source, kind)
        if place == "degrees":
            words = ["--id", "animal"] + (["--time", "timestamp"] if timed else ["--no-time"])
    return Study(source, words, place, timed, cell, sorted({str(row[0]) for row in rows if row[0] is not None}))


def maybe(chance, share, *words):
    return list(words) if chance.random() < share else []


def shared_options(chance, study):
    """What wxl kde and wxl akde both take."""
    words = maybe(chance, 0.5, "--prefix", chance.choice(["K", "abc", "r_", "P9"]))
    words += maybe(chance, 0.3, "--raster-format", "GTiff")
    words += maybe(chance, 0.25, "--group-by", chance.randint(1, 3))
    words += maybe(chance, 0.2, "--scaling", chance.choice([1, 1000, 100000000, 2.5]))
    words += maybe(chance, 0.5, "--html")
    words += maybe(chance, 0.5, "--gpkg")
    words += maybe(chance, 0.15, "--where", "sex = 'f'")
    if study.Timed:
        words += maybe(chance, 0.1, "--every", "8h")
        words += maybe(chance, 0.15, "--split-by", chance.choice(["month", "day-night", "sex", "year"]))
    return words


def kde_options(chance, study):
    spread = 2 * study.Cell
    extent = chance.choice([["--extent", "min"], ["--extent", "full"], ["--extent", f"full:{chance.choice([0, 7, 4000])}"],
                            []])
    words = extent + shared_options(chance, study)
    words += chance.choice([["--cell-size", study.Cell], ["--cell-size", study.Cell], ["--cell-size", "auto"], []])
    words += maybe(chance, 0.7, "--bandwidth", chance.choice(
        ["href", "lscv", "bcv", "adhoc", "adhoc:2", "prop:0.5,1", "prop:0.8", f"{spread}", f"{spread},{1.7 * spread}"]))
    words += maybe(chance, 0.2, "--adaptive") + maybe(chance, 0.2, "--rescale") + maybe(chance, 0.3, "--independence")
    words += maybe(chance, 0.15, "--reach", chance.choice([2, 5.5, "whole"]))
    words += maybe(chance, 0.5, "--isopleths", chance.choice(["95,50", "50", "99.5,10", "95,90,50"]))
    words += maybe(chance, 0.4, "--lines") + maybe(chance, 0.4, "--polygons") + maybe(chance, 0.2, "--donuts")
    words += maybe(chance, 0.3, "--mcp", chance.choice(["100", "95,50"]))
    words += maybe(chance, 0.4, "--verbose-log")
    words += ["--answer", chance.choice(["yes", "yes", "no", "buffer=yes"])] if chance.random() < 0.9 else []
    return words


def akde_options(chance, study):
    words = chance.choice([[], ["--extent", "min"], ["--extent", "full"], ["--extent", f"full:{10 * study.Cell}"]])
    words = words + shared_options(chance, study)
    words += maybe(chance, 0.5, "--cell-size", study.Cell)
    words += maybe(chance, 0.4, "--isopleths", chance.choice(["95", "50,99", "95,90,50"]))
    words += maybe(chance, 0.2, "--weights", "optimal") + maybe(chance, 0.4, "--lines")
    words += chance.choice([[], [], ["--method", "ML"], ["--method", "REML"], ["--at", "OUF:isotropic:20000,3000"],
                            ["--at", "OU:30000"], ["--at", "IID"]])
    return words
