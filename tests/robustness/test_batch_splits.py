#!/usr/bin/env python3
"""A run cut into tasks gives the bytes and the words of a run in one piece, whatever the cut and whatever was killed."""
import fcntl
import json
import pathlib
import random
import shutil
import signal
import subprocess
import time
import unittest

from batch_support import (WXL, differences, make_numbered_tracks, make_study, make_tracks, scratch_folder, snapshot,
                           wxl)

SMALL = ["--id-field", "animal", "--cell-size", "60", "--prefix", "K"]
ISOPLETHS = ["--isopleths", "95,50", "--lines", "--polygons"]


class BatchTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = scratch_folder()
        cls.folder = pathlib.Path(cls.scratch.name)
        cls.numbers = make_study(cls.folder, "numbers", 11, 40, lonely=(4,))
        cls.names = make_study(cls.folder, "names", 7, 30, text_ids=True, lonely=(2,))
        cls.out = cls.folder / "out"

    @classmethod
    def tearDownClass(cls):
        cls.scratch.cleanup()

    def clean(self):
        shutil.rmtree(self.out, ignore_errors=True)

    def plan(self, layer, options, tasks):
        done = wxl("batch", "plan", layer, *options, "--out", self.out, "--tasks", tasks)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.asked = done.stderr
        return len(json.loads(wxl("batch", "status", self.out, "--json").stdout)["tasks"])

    def in_one_piece(self, layer, options, more=()):
        self.clean()
        done = wxl("kde", layer, *options, *more, "--out", self.out)
        return done, snapshot(self.out)

    def check_same(self, wanted):
        self.assertEqual(differences(wanted, snapshot(self.out)), [])
        self.assertEqual([p for p in self.out.rglob(".*")], [])


class Splits(BatchTest):
    def check(self, layer, options, as_json=False):
        told = ["--json"] if as_json else []
        whole, wanted = self.in_one_piece(layer, options, told)
        self.assertTrue(any(name.endswith(("hdr.adf", ".tif")) for name in wanted), whole.stderr)

        self.clean()
        jobs = wxl("kde", layer, *options, *told, "--out", self.out, "--jobs", 2)
        self.check_same(wanted)
        self.assertEqual((jobs.stdout, jobs.stderr, jobs.returncode), (whole.stdout, whole.stderr, whole.returncode))
        self.assertFalse((self.out / "wxl_batch").exists())

        for tasks in (1, 4, 1000):
            self.clean()
            numbers = list(range(1, self.plan(layer, options, tasks) + 1))
            random.Random(tasks).shuffle(numbers)
            for number in numbers:
                done = wxl("batch", "run", self.out, "--task", number)
                self.assertEqual(done.returncode, 0, done.stderr)
            merged = wxl("batch", "merge", self.out, *told)
            self.check_same(wanted)
            self.assertEqual((merged.stdout, self.asked + merged.stderr, merged.returncode),
                             (whole.stdout, whole.stderr, whole.returncode))

    def test_text_ids_and_proportions(self):
        self.check(self.names, SMALL + ISOPLETHS + ["--bandwidth", "prop:0.5,1", "--extent", "min"])

    def test_a_search_with_its_profile_in_subfolders(self):
        self.check(self.numbers, SMALL + ISOPLETHS + ["--bandwidth", "lscv", "--verbose-log", "--extent", "min",
                                                      "--group-by", "3", "--independence"], as_json=True)

    def test_bandwidths_of_the_user_with_a_full_extent(self):
        self.check(self.numbers, SMALL + ["--bandwidth", "120,200", "--extent", "full:100", "--answer", "buffer=yes",
                                          "--rescale", "--raster-format", "GTiff"])

    def test_a_page_of_the_results(self):
        self.check(self.numbers, SMALL + ISOPLETHS + ["--bandwidth", "lscv", "--extent", "min", "--html"])
        page = (self.out / "WXL_KDE_ANALYSIS.html").read_text(encoding="utf-8")
        self.assertRegex(page, r"begun \d+/\d+/\d+ ")

    def test_the_extent_of_a_raster(self):
        reference = self.folder / "reference"
        wxl("kde", self.numbers, *SMALL, "--extent", "full:500", "--answer", "buffer=no", "--out", reference)
        self.check(self.numbers, SMALL + ["--adaptive", "--extent", f"ref:{reference / 'K100'}"])


    def test_what_the_program_chose_is_told_with_units(self):
        self.check(self.numbers, ["--id-field", "animal", "--no-gpkg"])
        told = self.in_one_piece(self.numbers, ["--id-field", "animal", "--no-gpkg"])[0].stdout
        self.assertRegex(told, r"100: 40 fixes, bandwidth [\d.]+ m, cells of \d+ m, 95 %: [\d.]+ km2")

    def test_points_without_an_animal_are_told_in_the_methods(self):
        layer = make_numbered_tracks(self.folder, "nameless", 3, 20, nameless=2)
        options = ["--id-field", "animal", "--cell-size", "60", "--extent", "min", "--html"]
        self.check(layer, options, as_json=True)
        methods = json.loads(self.in_one_piece(layer, options, ["--json"])[0].stdout)["methods"]["text"]
        self.assertIn("2 points without an animal's name were left out.", methods)


class Folders(BatchTest):
    OPTIONS = SMALL + ["--extent", "min"]

    def test_the_report_goes_on_below_an_earlier_one(self):
        earlier = ["--prefix", "E", "--id-field", "animal", "--cell-size", "90", "--extent", "min"]
        self.in_one_piece(self.numbers, earlier)
        wxl("kde", self.numbers, *self.OPTIONS, "--out", self.out)
        wanted = snapshot(self.out)
        self.in_one_piece(self.numbers, earlier)
        wxl("kde", self.numbers, *self.OPTIONS, "--out", self.out, "--jobs", 2)
        self.check_same(wanted)

    def test_tasks_need_no_input_and_leave_what_is_done(self):
        _, wanted = self.in_one_piece(self.numbers, self.OPTIONS)
        self.clean()
        self.plan(self.numbers, self.OPTIONS, 2)
        away = self.numbers.with_suffix(".away")
        self.numbers.rename(away)
        try:
            for _ in range(2):
                self.assertEqual(wxl("batch", "run", self.out, "--task", 1).returncode, 0)
            self.assertIn("task 1 is done already", wxl("batch", "run", self.out, "--task", 1).stderr)
            self.assertEqual(wxl("batch", "run", self.out, "--task", 1, "--again").returncode, 0)
            unfinished = wxl("batch", "merge", self.out)
            self.assertEqual(unfinished.returncode, 1)
            self.assertIn("the batch is not finished: missing 2;", unfinished.stderr)
            self.assertFalse((self.out / "WXL_KDE_ANALYSIS.txt").exists())
            index = {"SLURM_ARRAY_TASK_ID": "2"}
            self.assertEqual(wxl("batch", "run", self.out, env=index).returncode, 0)
        finally:
            away.rename(self.numbers)
        self.assertEqual(wxl("batch", "merge", self.out).returncode, 0)
        self.check_same(wanted)
        self.assertIn("merged already", wxl("batch", "merge", self.out).stderr)
        self.check_same(wanted)

    def test_what_somebody_else_made_is_not_replaced(self):
        self.in_one_piece(self.numbers, self.OPTIONS)
        kept = self.folder / "kept"
        shutil.copytree(self.out / "K100", kept, dirs_exist_ok=True)
        self.clean()
        self.plan(self.numbers, self.OPTIONS, 1)
        shutil.copytree(kept, self.out / "K100")
        refused = wxl("batch", "run", self.out, "--task", 1)
        self.assertEqual(refused.returncode, 1)
        self.assertIn("K100 was made by another program since the batch was planned", refused.stderr)
        status = json.loads(wxl("batch", "status", self.out, "--json").stdout)
        self.assertEqual((status["failed"], status["tasks"][0]["state"]), (1, "failed"))
        self.assertIn("made by another program", status["tasks"][0]["fault"])

    def test_a_waiting_batch_and_tasks_at_work_keep_other_runs_out(self):
        self.clean()
        self.plan(self.numbers, self.OPTIONS, 1)
        for command in (["kde"], ["batch", "plan"]):
            refused = wxl(*command, self.numbers, *self.OPTIONS, "--out", self.out)
            self.assertEqual(refused.returncode, 1)
            self.assertIn("holds a planned batch that is not merged yet", refused.stderr)
        with open(self.out / ".wxl_run.lock", "w", encoding="utf-8") as lock:
            fcntl.flock(lock, fcntl.LOCK_SH)
            refused = wxl("kde", self.numbers, *self.OPTIONS, "--out", self.out, "--overwrite")
            self.assertEqual(refused.returncode, 1)
            self.assertIn("another analysis is writing into the output folder", refused.stderr)
            self.assertEqual(wxl("batch", "run", self.out, "--task", 1).returncode, 0)

    def test_names_that_are_taken_are_refused_with_the_same_advice(self):
        self.in_one_piece(self.numbers, self.OPTIONS)
        refused = wxl("kde", self.numbers, *self.OPTIONS, "--out", self.out)
        self.assertEqual(refused.returncode, 1)
        self.assertIn("wxl: --overwrite replaces them", refused.stderr)
        for road in (["kde", self.numbers, "--jobs", 2], ["batch", "plan", self.numbers]):
            again = wxl(*road, *self.OPTIONS, "--out", self.out)
            self.assertEqual((again.stdout, again.stderr, again.returncode), (refused.stdout, refused.stderr, 1))

    def test_questions_are_asked_when_it_is_planned(self):
        self.clean()
        options = SMALL + ["--bandwidth", "200", "--extent", "full:10"]
        asked = wxl("batch", "plan", self.numbers, *options, "--out", self.out)
        self.assertEqual(asked.returncode, 1)
        self.assertIn("--answer buffer=yes", asked.stderr)
        self.assertFalse((self.out / "wxl_batch").exists())

    def test_the_scripts_for_slurm_name_the_missing_tasks_alone(self):
        self.clean()
        self.assertGreaterEqual(self.plan(self.numbers, self.OPTIONS, 5), 4)
        wxl("batch", "run", self.out, "--task", 2)
        script = wxl("batch", "submit", self.out, "--dry-run", "--sbatch", "--partition=short", "--mem", "2G").stdout
        self.assertRegex(script, r"#SBATCH --array=1,3-\d\n")
        self.assertIn("#SBATCH --partition=short\n", script)
        self.assertIn("#SBATCH --mem=2G\n", script)
        self.assertIn(f" -q batch run '{self.out}'\n", script)
        absent = wxl("batch", "submit", self.out, env={"PATH": "/nonexistent"})
        self.assertEqual(absent.returncode, 1)
        self.assertIn("there is no sbatch on this machine", absent.stderr)


class Overlap(BatchTest):
    """A comparison that is asked for with a batch is its last stage."""

    def test_a_batch_on_this_machine_ends_with_its_comparison(self):
        out = self.folder / "ends_with_comparison"
        options = ["--id-field", "animal", "--cell-size", "60", "--extent", "full:3000", "--answer", "yes"]
        planned = wxl("batch", "plan", self.numbers, *options, "--out", out, "--tasks", 3)
        self.assertEqual(planned.returncode, 0, planned.stderr)
        asked = wxl("batch", "overlap", out, "--tasks", 2, "--percent", "95,50", "--csv", out / "pairs.csv")
        self.assertEqual(asked.returncode, 0, asked.stderr)
        done = wxl("batch", "submit", out, "--engine", "local", "--jobs", 2)
        self.assertEqual(done.returncode, 0, done.stderr)
        status = json.loads(wxl("batch", "status", out, "--json").stdout)
        self.assertTrue(status["merged"] and status["overlap"]["merged"], status)
        pairs = (out / "pairs.csv").read_bytes()
        whole = wxl("overlap", out, "--percent", "95,50", "--csv", out / "whole.csv")
        self.assertEqual(whole.returncode, 0, whole.stderr)
        self.assertEqual((out / "whole.csv").read_bytes(), pairs)
        self.assertTrue(done.stdout.endswith(whole.stdout), done.stdout)
        again = wxl("batch", "submit", out, "--engine", "local")
        self.assertEqual((again.returncode, again.stdout), (0, ""))


    def test_the_page_repeats_what_was_typed_for_the_plan(self):
        out, compared = self.folder / "typed", self.folder / "compared"
        options = ["--id-field", "animal", "--cell-size", "60", "--extent", "full:3000", "--answer", "yes"]
        self.assertEqual(wxl("kde", self.numbers, *options, "--out", out).returncode, 0)
        typed = ["--percent", "95,50.0", "--scaling", "1000000"]
        self.assertEqual(wxl("overlap", out, *typed, "--out", compared).returncode, 0)
        wanted = snapshot(compared)
        shutil.rmtree(compared)
        self.assertEqual(wxl("batch", "overlap", out, *typed, "--tasks", 1).returncode, 0)
        self.assertEqual(wxl("batch", "overlap", out, "--task", 1).returncode, 0)
        self.assertEqual(wxl("batch", "overlap", out, "--merge", "--out", compared).returncode, 0)
        self.assertEqual(differences(wanted, snapshot(compared)), [])
        self.assertIn(b"--percent 95,50.0 --scaling 1000000", wanted["WXL_OVERLAP_ANALYSIS.html"])


class Ranges(unittest.TestCase):
    """The same of wxl akde."""
    OPTIONS = ["--prefix", "K", "--cell-size", "40"]
    TABLE = ["--from-crs", "EPSG:32633"]

    @classmethod
    def setUpClass(cls):
        cls.scratch = scratch_folder()
        cls.folder = pathlib.Path(cls.scratch.name)
        cls.tracks = make_tracks(cls.folder, "tracks", 6, 60, lonely=(3,))
        cls.out = cls.folder / "out"

    @classmethod
    def tearDownClass(cls):
        cls.scratch.cleanup()

    def run_anew(self, *arguments):
        shutil.rmtree(self.out, ignore_errors=True)
        return wxl(*arguments, "--out", self.out)

    def plan(self, options, tasks, source=None):
        source = source or [self.tracks, *self.TABLE]
        done = self.run_anew("batch", "plan-akde", *source, *self.OPTIONS, *options, "--tasks", tasks)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.asked = done.stderr
        return len(json.loads(wxl("batch", "status", self.out, "--json").stdout)["tasks"])

    @staticmethod
    def lines(text):
        return sorted(text.splitlines())

    def check(self, options, told=(), source=None):
        source = source or [self.tracks, *self.TABLE]
        whole = self.run_anew("akde", *source, *self.OPTIONS, *options, *told)
        self.assertEqual(whole.returncode, 0, whole.stderr)
        wanted = snapshot(self.out)
        jobs = self.run_anew("akde", *source, *self.OPTIONS, *options, *told, "--jobs", 2)
        self.assertEqual(differences(wanted, snapshot(self.out)), [])
        self.assertEqual((jobs.stdout, self.lines(jobs.stderr), jobs.returncode),
                         (whole.stdout, self.lines(whole.stderr), 0))
        self.assertFalse((self.out / "wxl_batch").exists())
        for tasks in (1, 4):
            numbers = list(range(1, self.plan(options, tasks, source) + 1))
            random.Random(tasks).shuffle(numbers)
            for number in numbers:
                done = wxl("batch", "run", self.out, "--task", number)
                self.assertEqual(done.returncode, 0, done.stderr)
            merged = wxl("batch", "merge", self.out, *told)
            self.assertEqual(differences(wanted, snapshot(self.out)), [])
            self.assertEqual((merged.stdout, self.lines(self.asked + merged.stderr)),
                             (whole.stdout, self.lines(whole.stderr)))

    def test_rasters_of_their_own_with_package_and_page(self):
        self.check(["--gpkg", "--html", "--lines", "--group-by", "2", "--weights", "optimal"])

    def test_one_grid_for_all_animals(self):
        self.check(["--extent", "full", "--raster-format", "GTiff"], told=["--json"])

    def test_a_given_model_on_the_grid_of_a_raster(self):
        self.run_anew("akde", self.tracks, *self.TABLE, *self.OPTIONS, "--raster-format", "GTiff")
        reference = self.folder / "reference.tif"
        shutil.copy(self.out / "K1.tif", reference)
        self.check(["--extent", f"ref:{reference}", "--at", "OUF:isotropic:20000,3000"])

    def test_times_that_are_numbers_and_points_without_an_animal(self):
        layer = make_numbered_tracks(self.folder, "numbers", 3, 60, nameless=2)
        self.check(["--gpkg", "--html"], source=[layer, "--id-field", "animal", "--time-field", "seconds"])
        self.assertIn("2 points have no value in the field animal", self.asked)

    def test_tasks_need_no_input_and_leave_what_is_done(self):
        self.run_anew("akde", self.tracks, *self.TABLE, *self.OPTIONS)
        wanted = snapshot(self.out)
        self.plan([], 2)
        away = self.tracks.with_suffix(".away")
        self.tracks.rename(away)
        try:
            self.assertEqual(wxl("batch", "run", self.out, "--task", 1).returncode, 0)
            self.assertIn("task 1 is done already", wxl("batch", "run", self.out, "--task", 1).stderr)
            self.assertIn("the batch is not finished: missing 2", wxl("batch", "merge", self.out).stderr)
            self.assertEqual(wxl("batch", "submit", self.out, "--engine", "local", "-q").returncode, 0)
        finally:
            away.rename(self.tracks)
        self.assertEqual(differences(wanted, snapshot(self.out)), [])
        self.assertIn("merged already", wxl("batch", "merge", self.out).stderr)

    def test_killed_tasks_are_run_again(self):
        chance = random.Random(7)
        self.run_anew("akde", self.tracks, *self.TABLE, *self.OPTIONS, "--gpkg")
        wanted = snapshot(self.out)
        count = self.plan(["--gpkg"], 3)
        for _ in range(5):
            for number in range(1, count + 1):
                task = subprocess.Popen([WXL, "batch", "run", self.out, "--task", str(number)],
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                time.sleep(chance.uniform(0, 0.4))
                task.kill()
                task.wait()
        self.assertEqual(wxl("batch", "submit", self.out, "--engine", "local", "-q").returncode, 0)
        self.assertEqual(differences(wanted, snapshot(self.out)), [])

    def test_what_somebody_else_made_is_not_replaced(self):
        self.plan([], 1)
        (self.out / "K2_poly.dbf").write_bytes(b"")
        refused = wxl("batch", "run", self.out, "--task", 1)
        self.assertEqual(refused.returncode, 1)
        self.assertIn("K2_poly.dbf was made by another program since the batch was planned", refused.stderr)
        (self.out / "K2_poly.dbf").unlink()
        waiting = wxl("akde", self.tracks, *self.TABLE, *self.OPTIONS, "--out", self.out)
        self.assertIn("holds a planned batch that is not merged yet", waiting.stderr)
        again = wxl("akde", self.tracks, *self.TABLE, *self.OPTIONS, "--overwrite", "--out", self.out)
        self.assertEqual(again.returncode, 0)
        self.assertFalse((self.out / "wxl_batch").exists())


class Kills(BatchTest):
    OPTIONS = SMALL + ISOPLETHS + ["--extent", "min"]

    def test_tasks_and_merges_killed_at_any_moment_are_run_again(self):
        chance = random.Random(5)
        whole, wanted = self.in_one_piece(self.numbers, self.OPTIONS)
        self.clean()
        count = self.plan(self.numbers, self.OPTIONS, 3)
        begin = time.monotonic()
        wxl("batch", "run", self.out, "--task", 1)
        longest = 1.2 * (time.monotonic() - begin)
        for _ in range(8):
            for number in range(1, count + 1):
                task = subprocess.Popen([WXL, "batch", "run", self.out, "--task", str(number)],
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                time.sleep(chance.uniform(0, longest))
                task.kill()
                task.wait()
        for number in range(1, count + 1):
            self.assertEqual(wxl("batch", "run", self.out, "--task", number, "--again").returncode, 0)
        for _ in range(8):
            merge = subprocess.Popen([WXL, "batch", "merge", self.out], stdout=subprocess.DEVNULL,
                                     stderr=subprocess.DEVNULL)
            time.sleep(chance.uniform(0, longest / 4))
            merge.kill()
            merge.wait()
        merged = wxl("batch", "merge", self.out)
        self.check_same(wanted)
        if "merged already" not in merged.stderr:
            self.assertEqual(merged.stdout, whole.stdout)

    def disturbed_jobs(self, how):
        """A run in two jobs that is stopped or loses a process, unless it was over before."""
        self.clean()
        with subprocess.Popen([WXL, "kde", self.numbers, *self.OPTIONS, "--out", self.out, "--jobs", "2"],
                              stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True) as run:
            children = pathlib.Path(f"/proc/{run.pid}/task/{run.pid}/children")
            met = []
            while not met and run.poll() is None:
                try:
                    met = children.read_text(encoding="ascii").split()
                except OSError:
                    break
                time.sleep(0.002)
            if met and how == "parent":
                run.send_signal(signal.SIGINT)
            elif met:
                subprocess.run(["kill", "-9", met[0]], stderr=subprocess.DEVNULL, check=False)
            return run, run.communicate(timeout=60)[1]

    def test_jobs_that_are_stopped_or_lose_a_process_go_on_where_they_stopped(self):
        _, wanted = self.in_one_piece(self.numbers, self.OPTIONS)
        for how in ("parent", "child"):
            for _ in range(20):
                run, said = self.disturbed_jobs(how)
                if run.returncode != 0:
                    break
            self.assertEqual(run.returncode, 1, said)
            self.assertIn("wxl: stopped" if how == "parent" else "was killed by signal 9", said)
            self.assertIn(f'wxl batch submit "{self.out}" --engine local --jobs 2 goes on', said)
            wxl("batch", "submit", self.out, "--engine", "local", "--jobs", 2)
            self.check_same(wanted)


if __name__ == "__main__":
    unittest.main()
