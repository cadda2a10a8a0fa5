"""A Slurm of one machine with two slots, for a test: everything in one folder, no service of the system."""
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import time

PROGRAMS = ("munged", "slurmctld", "slurmd", "sbatch", "squeue", "scontrol")
PATH = os.environ["PATH"] + ":/usr/sbin:/sbin"

CONFIGURATION = """ClusterName=t
SlurmctldHost={host}(127.0.0.1)
SlurmUser=root
SlurmdUser=root
AuthType=auth/munge
AuthInfo=socket={folder}/munge.sock
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
SchedulerParameters=batch_sched_delay=0,sched_interval=1,bf_interval=1,sched_min_interval=0
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.pid
SlurmctldLogFile={folder}/slurmctld.log
SlurmdLogFile={folder}/slurmd.log
SlurmctldPort={control_port}
SlurmdPort={node_port}
ReturnToService=2
MpiDefault=none
JobAcctGatherType=jobacct_gather/none
PropagateResourceLimits=NONE
KillWait=2
NodeName={host} NodeAddr=127.0.0.1 CPUs=2 RealMemory=4000 State=UNKNOWN
PartitionName=p Nodes={host} Default=YES MaxTime=INFINITE State=UP
"""


class Unavailable(Exception):
    """Slurm is not installed here, or cannot be started."""


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Cluster:
    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.munged = None
        absent = [program for program in PROGRAMS if not shutil.which(program, path=PATH)]
        if absent:
            raise Unavailable(f"Slurm is not installed here ({', '.join(absent)}): scripts/setup tests installs it")
        if os.geteuid() != 0:
            raise Unavailable("this Slurm can be started by root alone")
        self.environment = dict(os.environ, PATH=PATH, SLURM_CONF=str(self.folder / "slurm.conf"))

    def start(self):
        for name in ("state", "spool"):
            (self.folder / name).mkdir()
        key = self.folder / "munge.key"
        key.write_bytes(os.urandom(1024))
        key.chmod(0o400)
        self.folder.chmod(0o755)
        host = socket.gethostname().split(".")[0]
        (self.folder / "slurm.conf").write_text(CONFIGURATION.format(
            host=host, folder=self.folder, control_port=free_port(), node_port=free_port()), encoding="ascii")
        # Slurm 24 asks for control groups otherwise, which a minimal system does not have; Slurm 22 knows no such value.
        said = self.said("slurmd", "-V").split()
        if len(said) == 2 and int(said[1].split(".")[0]) >= 24:
            (self.folder / "cgroup.conf").write_text("CgroupPlugin=disabled\n", encoding="ascii")
        files = [f"--{name}={self.folder / f'munge.{end}'}" for name, end in (
            ("key-file", "key"), ("socket", "sock"), ("pid-file", "pid"), ("log-file", "log"), ("seed-file", "seed"))]
        self.munged = subprocess.Popen(["munged", "--foreground", "--force", *files], env=self.environment,
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.wait_for(lambda: (self.folder / "munge.sock").exists(), 10, "munged does not start")
        for daemon in ("slurmctld", "slurmd"):
            begun = subprocess.run([daemon], env=self.environment, capture_output=True, text=True, check=False)
            if begun.returncode != 0:
                raise Unavailable(f"{daemon} does not start: {begun.stderr.strip() or self.last_words_of(daemon)}")
        self.wait_for(lambda: self.said("sinfo", "-h", "-o", "%t").strip() == "idle", 30, "no node becomes idle")

    def said(self, *command):
        return subprocess.run(command, env=self.environment, capture_output=True, text=True, timeout=30,
                              check=False).stdout

    def last_words_of(self, daemon):
        log = self.folder / f"{daemon}.log"
        lines = log.read_text(encoding="utf-8", errors="replace").splitlines() if log.exists() else []
        return "; ".join(lines[-3:])

    @staticmethod
    def wait_for(condition, seconds, otherwise):
        end = time.monotonic() + seconds
        while not condition():
            if time.monotonic() > end:
                raise Unavailable(otherwise)
            time.sleep(0.1)

    def stop(self):
        if self.munged is None:
            return
        self.said("scancel", "--full", "--user=root")
        for daemon in ("slurmd", "slurmctld"):
            pid = self.folder / f"{daemon}.pid"
            if pid.exists():
                try:
                    os.kill(int(pid.read_text(encoding="ascii")), signal.SIGTERM)
                except (ProcessLookupError, ValueError):
                    pass
        end = time.monotonic() + 10
        while any((self.folder / f"{daemon}.pid").exists() for daemon in ("slurmd", "slurmctld")):
            if time.monotonic() > end:
                break
            time.sleep(0.1)
        self.munged.terminate()
        self.munged.wait(10)
