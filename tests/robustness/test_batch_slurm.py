#!/usr/bin/env python3
"""Two hundred animals as a job array on a real Slurm with two slots, with tasks killed and requeued: the bytes of one run."""
import json
import os
import pathlib
import random
import shutil
import signal
import sys
import time

from batch_support import differences, make_study, scratch_folder, snapshot, wxl
from slurm_cluster import Cluster, Unavailable

SKIPPED = 77
OPTIONS = ["--id-field", "animal", "--cell-size", "60", "--prefix", "K", "--extent", "min", "--isopleths", "95,50",
           "--polygons", "--bandwidth", "lscv", "--group-by", "50"]
PATIENCE = 90


def task_processes(out):
    """Processes of this batch's tasks."""
    found = []
    for entry in pathlib.Path("/proc").iterdir():
        try:
            words = (entry / "cmdline").read_bytes().split(b"\0") if entry.name.isdigit() else []
        except OSError:
            continue
        if b"run" in words and os.fsencode(str(out)) in words:
            found.append(int(entry.name))
    return found


def stopped_task(out, chance):
    """A process of one of the batch's tasks, stopped at a moment of chance in its work, and its job; none where none is met."""
    for process in task_processes(out):
        time.sleep(chance.uniform(0, 0.02))
        try:
            words = pathlib.Path(f"/proc/{process}/environ").read_bytes().split(b"\0")
            os.kill(process, signal.SIGSTOP)
        except OSError:
            continue
        jobs = [os.fsdecode(word.partition(b"=")[2]) for word in words if word.startswith(b"SLURM_JOB_ID=")]
        if jobs:
            return process, jobs[0]
        os.kill(process, signal.SIGCONT)
    return None


def disturb(cluster, out, chance, kills, requeues):
    """Kills and requeues tasks met at work, so often at most, until the queue is empty; how often each was done."""
    ends = ["kill"] * kills + ["requeue"] * requeues
    chance.shuffle(ends)
    done = {"kill": 0, "requeue": 0}
    looked = 0.0
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        met = stopped_task(out, chance) if ends and chance.random() < 0.5 else None
        if met:
            process, job = met
            how = ends.pop()
            if how == "requeue":
                # Stopped, the task is still at work when Slurm is asked, however busy the machine is.
                cluster.said("scontrol", "requeue", job)
            try:
                os.kill(process, signal.SIGKILL if how == "kill" else signal.SIGCONT)
            except ProcessLookupError:
                pass
            done[how] += 1
        if time.monotonic() - looked > 0.3:
            looked = time.monotonic()
            jobs = [line.split() for line in cluster.said("squeue", "-h", "-r", "-o", "%i %t %r").splitlines()]
            if not jobs:
                return done["kill"], done["requeue"]
            for job in (line[0] for line in jobs if line[2] == "BeginTime"):
                # Slurm holds a requeued job for two minutes.
                cluster.said("scontrol", "update", f"JobId={job}", "StartTime=now")
        time.sleep(0.002)
    raise AssertionError("the queue does not become empty:\n" + cluster.said("squeue"))


def check(cluster, folder):
    chance = random.Random(3)
    layer = make_study(folder, "study", 200, 40, text_ids=True, lonely=(7,))
    out = folder / "out"
    whole = wxl("kde", layer, *OPTIONS, "--out", out)
    wanted = snapshot(out)
    assert len(wanted) > 1000, whole.stderr
    shutil.rmtree(out)

    planned = wxl("batch", "plan", layer, *OPTIONS, "--out", out, "--tasks", 24)
    assert planned.returncode == 0, planned.stderr
    submissions = killed = requeued = 0
    while not json.loads(wxl("batch", "status", out, "--json").stdout)["merged"]:
        submissions += 1
        assert submissions < 12, wxl("batch", "status", out).stdout
        sent = wxl("batch", "submit", out, "--engine", "slurm", "--mem", "200M", env=cluster.environment)
        assert sent.returncode == 0, sent.stderr
        kills, requeues = {1: (6, 3), 2: (1, 0)}.get(submissions, (0, 0))
        disturbed = disturb(cluster, out, chance, kills, requeues)
        killed += disturbed[0]
        requeued += disturbed[1]
        if submissions == 1:
            assert killed > 0 and requeued > 0, "no task was met at work"
    log = (out / "wxl_batch/logs/merge.log").read_text(encoding="utf-8")
    unsaid = set(whole.stdout.splitlines()) - set(log.splitlines())
    assert not unsaid, f"the merge does not say what the run in one piece says: {unsaid}"
    assert differences(wanted, snapshot(out)) == [], differences(wanted, snapshot(out))[:10]
    left = [str(left) for left in out.rglob(".*")]
    assert left == [], left
    print(f"{submissions} submissions, {killed} tasks killed, {requeued} requeued: the same {len(wanted)} files")


def compared(folder):
    """What a comparison wrote, but for its page, which tells times and words of the call."""
    return {name: (folder / name).read_bytes() for name in ("WXL_OVERLAP.csv", "WXL_OVERLAP.svg", "RANGES.gpkg")}


def check_overlap(cluster, folder):
    """A comparison that is asked for with the batch follows it, and a failed merge takes its jobs with it."""
    layer = make_study(folder, "compared", 12, 30)
    options = ["--id-field", "animal", "--cell-size", "60", "--extent", "full:3000", "--answer", "yes"]
    out = folder / "ranges"
    whole = folder / "whole"
    assert wxl("kde", layer, *options, "--out", whole).returncode == 0
    assert wxl("overlap", whole, "--percent", "95,50", "--out", whole / "compared").returncode == 0
    wanted = compared(whole / "compared")

    planned = wxl("batch", "plan", layer, *options, "--out", out, "--tasks", 4)
    assert planned.returncode == 0, planned.stderr
    asked = wxl("batch", "overlap", out, "--tasks", 3, "--percent", "95,50", "--out", out / "compared")
    assert asked.returncode == 0, asked.stderr
    # The plan's fixes are away: tasks and merge fail, and nothing waits for ever.
    points = out / "wxl_batch/points.bin"
    points.rename(points.with_suffix(".away"))
    submissions = 0
    while not json.loads(wxl("batch", "status", out, "--json").stdout)["overlap"]["merged"]:
        submissions += 1
        assert submissions < 6, wxl("batch", "status", out).stdout
        sent = wxl("batch", "submit", out, "--engine", "slurm", "--mem", "200M", env=cluster.environment)
        assert sent.returncode == 0, sent.stderr
        disturb(cluster, out, random.Random(5), 0, 0)
        if submissions == 1:
            status = json.loads(wxl("batch", "status", out, "--json").stdout)
            assert not status["merged"] and status["overlap"]["planned"] is None, status
            points.with_suffix(".away").rename(points)
    assert submissions == 2, submissions
    assert compared(out / "compared") == wanted
    print("a comparison follows its batch: the same files")


def main():
    # Ended from outside, it still stops its Slurm.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    with scratch_folder() as scratch:
        folder = pathlib.Path(scratch)
        (folder / "slurm").mkdir()
        try:
            cluster = Cluster(folder / "slurm")
            try:
                cluster.start()
                check(cluster, folder)
                check_overlap(cluster, folder)
            finally:
                cluster.stop()
        except Unavailable as reason:
            print(f"skipped: {reason}")
            return SKIPPED
    return 0


if __name__ == "__main__":
    sys.exit(main())
