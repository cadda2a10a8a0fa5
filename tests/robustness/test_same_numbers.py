#!/usr/bin/env python3
"""JSON, summary, package and page of one run tell the same numbers; an earlier run leaves nothing stale; a dry run
names what a run then writes.

WXL_SEEDS=FIRST-LAST tries other seeds than those that are always tried.
"""
import csv
import json
import pathlib
import random
import re
import shutil
import sqlite3
import unittest

from batch_support import make_tracks, scratch_folder, timeless, wxl
from random_studies import akde_options, kde_options, make_random_study
from test_random_runs import seeds


def number(text):
    """A cell as a number; None where it is empty."""
    return None if text in ("", None) else float(text)


def text_of(animal):
    """An ID as tables have it."""
    return f"{animal:.15g}" if isinstance(animal, float) else str(animal)


class SameNumbers(unittest.TestCase):
    def setUp(self):
        self.scratch = scratch_folder()
        self.folder = pathlib.Path(self.scratch.name)
        self.out = self.folder / "out"

    def tearDown(self):
        self.scratch.cleanup()

    def same(self, told, wanted, what):
        """Equal, or both missing; texts have 15 digits."""
        if told is None or wanted is None:
            self.assertEqual(told, wanted, what)
        else:
            self.assertLessEqual(abs(told - wanted), 1e-13 * abs(wanted), what)

    def rows(self, sql):
        with sqlite3.connect(f"file:{self.out / 'RANGES.gpkg'}?mode=ro", uri=True) as package:
            package.row_factory = sqlite3.Row
            try:
                return [dict(row) for row in package.execute(sql)]
            except sqlite3.OperationalError:
                return []

    def table(self, name):
        """Rows of a summary, without the apostrophe that keeps a text from being a formula."""
        with open(self.out / name, encoding="utf-8", newline="") as summary:
            rows = list(csv.DictReader(summary))
        return [{key: cell.removeprefix("'") if cell[1:2] in "-+=@" else cell for key, cell in row.items()}
                for row in rows]

    def page_numbers(self, name):
        """Numbers that the page sorts its tables by."""
        page = (self.out / name).read_text(encoding="utf-8")
        return {float(value) for value in re.findall(r'data-value="([^"]+)"', page) if value.lower() != "nan"}

    def on_page(self, value, numbers, what):
        if value is not None:
            self.assertTrue(any(abs(value - one) <= 1e-13 * abs(value) for one in numbers), (what, value))

    def study(self, command, seed):
        """The words of a run, and of an earlier one of other options."""
        chance = random.Random(f"same {command} {seed}")
        study = make_random_study(chance, self.folder, f"study{command}{seed}", command == "akde" or seed % 2 == 0)
        options = kde_options if command == "kde" else akde_options
        shutil.rmtree(self.out, ignore_errors=True)
        self.metres = study.Place != "feet"

        def words():
            return [command, study.Source, *study.Words, *options(chance, study), "--out", self.out]
        return words(), words()

    def told(self, words):
        """What a run tells as JSON, with package and page; None where it was refused."""
        added = [word for word in ("--html", "--gpkg") if word not in words]
        done = wxl(*words, *added, "--json")
        return json.loads(done.stdout) if done.stdout else None

    def check_kde(self, told):
        summary = self.table("WXL_KDE_SUMMARY.csv")
        page = self.page_numbers("WXL_KDE_ANALYSIS.html")
        in_package = {row["raster"]: row for row in self.rows("SELECT * FROM summary")}
        for animal in told["animals"]:
            rows = [row for row in summary if row["raster"] == animal["raster"] and row["method"] == animal["method"]]
            kept = in_package[animal["raster"]]
            for row, name_key, interval in ((rows[0], "id", "median_interval_s"), (kept, "animal", "median_s")):
                self.assertEqual((row[name_key], int(row["n"]), int(row["status"])),
                                 (text_of(animal["id"]), animal["n"], animal["status"]))
                # Tables have bandwidths in map units, JSON those of the sample too.
                self.same(number(row["bandwidth"]), animal["bandwidth_map_units"], "bandwidth")
                if animal["bandwidth"] == animal["bandwidth_map_units"]:
                    self.same(number(row["href"]), animal["href"], "href")
                for key in ("volume", "days"):
                    self.same(number(row[key]), animal[key], key)
                self.same(number(row[interval]), animal["median_interval_s"], "interval")
                for key in ("first", "last", "reason"):
                    self.assertEqual(row[key] or None, animal[key], key)
            self.check_areas(animal, rows, page)

    def check_areas(self, animal, rows, page):
        contours = {row["percent"]: row for row in self.rows("SELECT * FROM isopleths")
                    if row["raster"] == animal["raster"]}
        for level, row in zip(animal["levels"], rows, strict=True) if animal["levels"] else []:
            self.assertEqual(float(row["percent"]), level["percent"])
            self.same(number(row["area"]), level["area"], "area")
            self.same(number(row["level"]), level["level"], "level")
            self.on_page(level["area"], page, "area on the page")
            drawn = contours.get(level["percent"], {})
            if number(row["area_km2"]) is not None and drawn:
                self.same(drawn["area_m2"], 1e6 * number(row["area_km2"]), "area in the package")
        polygons = {row["percent"]: row for row in self.rows("SELECT * FROM mcp") if row["animal"] == text_of(animal["id"])}
        for one in animal["mcp"]:
            self.on_page(one["area"], page, "polygon on the page")
            if self.metres and one["percent"] in polygons:
                self.same(polygons[one["percent"]]["area_m2"], one["area"], "polygon in the package")

    def check_akde(self, told, scaling):
        summary = self.table("WXL_AKDE_SUMMARY.csv")
        page = self.page_numbers("WXL_AKDE_ANALYSIS.html")
        in_package = self.rows("SELECT * FROM summary")
        for animal in told["animals"]:
            for rows in ([row for row in summary if row["raster"] == animal["raster"]],
                         [row for row in in_package if row["raster"] == animal["raster"]]):
                row = rows[0]
                for key in ("tau_position_s", "tau_velocity_s", "dof_area", "h", "dof_bandwidth", "bias"):
                    self.same(number(row[key]), animal[key], key)
                self.assertEqual((int(row["n"]), row["model"] or None), (animal["n"], animal["model"]))
                self.same(number(row["volume"]), animal["volume"] and animal["volume"] / scaling, "volume")
                self.assertEqual(row["reason"] or None, animal["reason"])
                for key in ("first", "last"):
                    self.assertEqual(row.get(key, animal[key]) or None, animal[key], key)
                unit = "_m2" if "area_m2" in row else ""
                for isopleth in animal["isopleths"] if self.metres or not unit else []:
                    found = [one for one in rows if number(one["percent"]) == isopleth["percent"]]
                    name = {"low": "area_low", "est": "area", "high": "area_high"}[isopleth["bound"]]
                    if name + unit in found[0]:
                        self.same(number(found[0][name + unit]), isopleth["area"], name)
                    if isopleth["bound"] == "est":
                        self.on_page(isopleth["area"], page, "area on the page")

    def test_numbers_of_kernel_ranges(self):
        for seed in seeds(5):
            with self.subTest(seed=seed):
                words, _ = self.study("kde", seed)
                told = self.told(words)
                if told:
                    self.check_kde(told)

    def test_numbers_of_ranges_of_tracks(self):
        for seed in seeds(5):
            with self.subTest(seed=seed):
                words, _ = self.study("akde", seed)
                told = self.told(words)
                if told:
                    self.check_akde(told, float(words[words.index("--scaling") + 1]) if "--scaling" in words else 1e6)

    def check_dry_run(self, words):
        planned = wxl(*words, "--dry-run", "--json")
        self.assertFalse(self.out.exists())
        done = wxl(*words, "--json")
        if not planned.stdout or not done.stdout:
            return
        coming = json.loads(planned.stdout)["animals"]
        made = json.loads(done.stdout)["animals"]
        self.assertEqual([(one["id"], one.get("n_used", one["n"]), one["raster"]) for one in coming],
                         [(one["id"], one["n"], one["raster"]) for one in made])
        for plan, animal in zip(coming, made):
            if animal["status"] == 0:
                self.assertIsNone(plan["failure"])
                self.assertTrue(self.stands(animal["raster"]), animal)
            if plan["failure"] is not None:
                self.assertEqual(plan["failure"], animal["reason"])

    def stands(self, raster):
        return (self.out / raster).exists() or (self.out / (raster + ".tif")).exists()

    def test_a_dry_run_names_what_a_run_writes(self):
        for seed in seeds(5):
            for command in ("kde", "akde"):
                with self.subTest(command=command, seed=seed):
                    self.check_dry_run(self.study(command, seed)[0])

    def check_overwriting(self, words, earlier):
        fresh = wxl(*words)
        alone = self.state()
        shutil.rmtree(self.out, ignore_errors=True)
        wxl(*earlier)
        again = wxl(*words, "--overwrite")
        self.assertEqual((again.stdout, again.returncode), (fresh.stdout, fresh.returncode))
        later = self.state()
        self.assertEqual([name for name in alone if later.get(name) != alone[name]], [])
        for name in ("WXL_KDE_SUMMARY.csv", "WXL_AKDE_SUMMARY.csv"):
            for row in self.table(name) if (self.out / name).exists() else []:
                if not row["reason"] and row.get("status", "0") == "0":
                    self.assertTrue(self.stands(row["raster"]), row)
        for row in self.rows("SELECT raster FROM isopleths") if (self.out / "RANGES.gpkg").exists() else []:
            self.assertTrue(self.stands(row["raster"]), row)

    def test_what_an_earlier_run_left_is_not_stale(self):
        for seed in seeds(5):
            for command in ("kde", "akde"):
                with self.subTest(command=command, seed=seed):
                    self.check_overwriting(*self.study(command, seed))

    def state(self):
        """Bytes of all files but those that grow from run to run."""
        growing = {"RANGES.gpkg", "WXL_KDE_SUMMARY.csv", "WXL_AKDE_SUMMARY.csv", "WXL_KDE_ANALYSIS.txt"}
        return {str(file.relative_to(self.out)): timeless(file.name, file.read_bytes())
                for file in sorted(self.out.rglob("*")) if file.is_file() and file.name not in growing}

    TABLE = ["--from-crs", "EPSG:32633", "--cell-size", 40]

    def test_a_model_of_one_time_scale_has_it_for_both_in_tables(self):
        tracks = make_tracks(self.folder, "tracks", 1, 60)
        words = ["akde", tracks, *self.TABLE, "--at", "OUf:20000", "--gpkg", "--out", self.out, "--json"]
        animal = json.loads(wxl(*words).stdout)["animals"][0]
        self.assertEqual((animal["tau_position_s"], animal["tau_velocity_s"]), (20000, 20000))
        for row in (self.table("WXL_AKDE_SUMMARY.csv")[0], self.rows("SELECT * FROM summary")[0]):
            self.assertEqual((float(row["tau_position_s"]), float(row["tau_velocity_s"])), (20000, 20000))
        self.assertEqual((animal["first"], animal["last"], animal["days"]),
                         ("2020-01-01T00:00:00Z", "2020-01-05T22:00:00Z", 118 / 24))

    def test_tables_forget_rasters_that_go_for_numbered_ones(self):
        tracks = make_tracks(self.folder, "tracks", 2, 30)
        words = ["kde", tracks, *self.TABLE, "--extent", "min", "--gpkg", "--out", self.out]
        self.assertEqual(wxl(*words).returncode, 0)
        self.assertEqual(wxl(*words, "--bandwidth", "prop:0.5,1", "--overwrite").returncode, 0)
        self.assertFalse((self.out / "1").exists())
        numbered = {"1_b1", "1_b2", "2_b1", "2_b2"}
        self.assertEqual({row["raster"] for row in self.table("WXL_KDE_SUMMARY.csv")}, numbered)
        for table in ("summary", "isopleths"):
            self.assertEqual({row["raster"] for row in self.rows(f"SELECT raster FROM {table}")}, numbered)

    def test_names_of_rasters_have_their_sub_folder_everywhere(self):
        tracks = make_tracks(self.folder, "tracks", 3, 30)
        wanted = ["animals_1-2/1", "animals_1-2/2", "animals_3-3/3"]
        for command in ("kde", "akde"):
            words = [command, tracks, *self.TABLE, "--group-by", 2, "--out", self.out / command, "--json"]
            for more in (["--dry-run"], []):
                told = json.loads(wxl(*words, *more).stdout)
                self.assertEqual([animal["raster"] for animal in told["animals"]], wanted)


if __name__ == "__main__":
    unittest.main()
