#!/usr/bin/env python3
"""Whatever the study and the options: in one piece, in jobs and in tasks a run leaves the same bytes and words.

WXL_SEEDS=FIRST-LAST tries other seeds than those that are always tried.
"""
import json
import os
import pathlib
import random
import shutil
import subprocess
import time
import unittest

from batch_support import WXL, differences, scratch_folder, snapshot, wxl
from random_studies import akde_options, kde_options, make_random_study

def seeds(usual):
    """So many as usual, or those that are asked for."""
    first, _, last = os.environ.get("WXL_SEEDS", "").partition("-")
    return range(int(first), int(last or first) + 1) if first else range(1, usual + 1)


class RandomRuns(unittest.TestCase):
    def setUp(self):
        self.scratch = scratch_folder()
        self.folder = pathlib.Path(self.scratch.name)
        self.out = self.folder / "out"

    def tearDown(self):
        self.scratch.cleanup()

    def begin(self, earlier):
        """An empty output folder, or one that holds an earlier run."""
        shutil.rmtree(self.out, ignore_errors=True)
        if earlier:
            wxl(*earlier, "--out", self.out)

    def killed(self, number, chance):
        with subprocess.Popen([WXL, "batch", "run", self.out, "--task", str(number)], stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL) as task:
            time.sleep(chance.uniform(0, 0.05))
            task.kill()

    def run_tasks(self, chance):
        count = len(json.loads(wxl("batch", "status", self.out, "--json").stdout)["tasks"])
        numbers = list(range(1, count + 1))
        chance.shuffle(numbers)
        if numbers:
            self.killed(chance.choice(numbers), chance)
        for number in numbers:
            done = wxl("batch", "run", self.out, "--task", number)
            self.assertEqual(done.returncode, 0, done.stderr)
            if chance.random() < 0.3:
                again = wxl("batch", "run", self.out, "--task", number, *chance.choice([[], ["--again"]]))
                self.assertEqual(again.returncode, 0, again.stderr)

    def check_batch(self, plan, words, told, earlier, chance, whole, wanted):
        self.begin(earlier)
        planned = wxl("batch", plan, *words, "--out", self.out, "--tasks", chance.choice([1, 2, 3, 50]))
        if planned.returncode != 0:
            self.assertEqual((planned.stdout, planned.stderr, planned.returncode),
                             (whole.stdout, whole.stderr, whole.returncode))
            self.assertEqual(differences(wanted, snapshot(self.out)), [])
            return
        self.run_tasks(chance)
        merged = wxl("batch", "merge", self.out, *told)
        self.assertEqual((merged.stdout, sorted((planned.stderr + merged.stderr).splitlines()), merged.returncode),
                         (whole.stdout, sorted(whole.stderr.splitlines()), whole.returncode))
        self.assertEqual(differences(wanted, snapshot(self.out)), [])

    def check_overlap(self, scaling, chance):
        """The comparison of the rasters, which may be refused for what they are."""
        words = scaling + chance.choice([[], ["--percent", "95,50.0"], ["--conditional", "--normalise"]])
        shown = chance.choice([[], ["--all"], ["--json"], ["--index", "ba,hd"]])
        compared = self.folder / "compared"
        outputs = [*shown, "--csv", self.folder / "pairs.csv", "--overwrite", "--out", compared]
        shutil.rmtree(compared, ignore_errors=True)
        whole = wxl("overlap", self.out, *words, *outputs)
        wanted = snapshot(compared)
        shutil.rmtree(compared, ignore_errors=True)
        planned = wxl("batch", "overlap", self.out, *words, "--tasks", 3)
        if planned.returncode != 0:
            self.assertEqual((planned.stderr, planned.returncode), (whole.stderr, whole.returncode))
            return
        state = json.loads(wxl("batch", "status", self.out, "--json").stdout)["overlap"]
        for task in reversed(range(1, len(state["tasks"]) + 1)):
            ran = wxl("batch", "overlap", self.out, "--task", task)
            self.assertEqual(ran.returncode, 0, ran.stderr)
        merged = wxl("batch", "overlap", self.out, "--merge", *outputs)
        self.assertEqual((merged.stdout, merged.stderr, merged.returncode),
                         (whole.stdout, whole.stderr, whole.returncode))
        self.assertEqual(differences(wanted, snapshot(compared)), [])

    def check(self, seed, command):
        chance = random.Random(f"{command} {seed}")
        options = kde_options if command == "kde" else akde_options
        study = make_random_study(chance, self.folder, f"study{seed}", command == "akde" or chance.random() < 0.6)
        words = [study.Source, *study.Words, *options(chance, study)]
        told = ["--json"] if chance.random() < 0.4 else []
        earlier = []
        if chance.random() < 0.3:
            earlier = [command, study.Source, *study.Words, *options(chance, study)]
            words += ["--overwrite"] if chance.random() < 0.7 else []
        self.begin(earlier)
        whole = wxl(command, *words, *told, "--out", self.out)
        self.assertIn(whole.returncode, (0, 1, 2), whole.stderr)
        wanted = snapshot(self.out)
        self.begin(earlier)
        jobs = wxl(command, *words, *told, "--out", self.out, "--jobs", 3)
        self.assertEqual((jobs.stdout, sorted(jobs.stderr.splitlines()), jobs.returncode),
                         (whole.stdout, sorted(whole.stderr.splitlines()), whole.returncode))
        self.assertEqual(differences(wanted, snapshot(self.out)), [])
        plan = "plan" if command == "kde" else "plan-akde"
        self.check_batch(plan, words, told, earlier, chance, whole, wanted)
        if "--extent" in words and "full" in str(words[words.index("--extent") + 1]) and self.out.exists():
            scaled = words.index("--scaling") if "--scaling" in words else len(words)
            self.check_overlap(words[scaled:scaled + 2], chance)

    def all_seeds(self, command):
        for seed in seeds(8):
            with self.subTest(command=command, seed=seed):
                self.check(seed, command)

    def test_kernel_ranges(self):
        self.all_seeds("kde")

    def test_ranges_of_tracks(self):
        self.all_seeds("akde")


if __name__ == "__main__":
    unittest.main()
