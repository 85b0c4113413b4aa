# SPDX-License-Identifier: MIT
"""A Slurm of one node on this machine, for as long as a test takes."""

import getpass
import os
import shutil
import socket
import subprocess
import time
from pathlib import Path

PROGRAMS = ("munged", "mungekey", "slurmctld", "slurmd", "sbatch", "scancel", "sinfo", "squeue")
SBIN = "/usr/sbin:/sbin"
CONFIGURATION = """\
ClusterName=here
SlurmctldHost={host}(127.0.0.1)
SlurmctldPort={control}
SlurmdPort={node}
SlurmUser={user}
SlurmdUser={user}
AuthType=auth/munge
AuthInfo=socket={folder}/munge.socket
CredType=cred/munge
ProctrackType=proctrack/pgid
TaskPlugin=task/none
SwitchType=switch/none
MpiDefault=none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
ReturnToService=2
KillWait=2
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.pid
SlurmctldLogFile={folder}/slurmctld.log
SlurmdLogFile={folder}/slurmd.log
NodeName={host} NodeAddr=127.0.0.1 CPUs={cpus} State=UNKNOWN
PartitionName=all Nodes=ALL Default=YES MaxTime=INFINITE State=UP
"""


def why_not():
    """What is missing for a Slurm here; an empty text if nothing is."""
    os.environ["PATH"] += ":" + SBIN
    missing = [name for name in PROGRAMS if shutil.which(name) is None]
    if missing:
        return ("apt-get install slurmctld slurmd slurm-client munge: there is no "
                + ", ".join(missing))
    return "" if os.geteuid() == 0 else "slurmd needs root"


def free_ports(count):
    taken = [socket.socket() for _ in range(count)]
    for one in taken:
        one.bind(("127.0.0.1", 0))
    ports = [one.getsockname()[1] for one in taken]
    for one in taken:
        one.close()
    return ports


class Slurm:
    """munged, slurmctld and slurmd in the foreground, everything that they write in one folder."""

    def __init__(self, folder):
        self.folder = Path(folder)
        self.daemons = []
        for name in ("state", "spool"):
            (self.folder / name).mkdir()
        control, node = free_ports(2)
        (self.folder / "slurm.conf").write_text(CONFIGURATION.format(
            host=socket.gethostname().split(".")[0], control=control, node=node, folder=folder,
            user=getpass.getuser(), cpus=os.cpu_count()), encoding="ascii")
        (self.folder / "cgroup.conf").write_text("CgroupPlugin=cgroup/v1\n", encoding="ascii")
        self.environment = dict(os.environ, SLURM_CONF=str(self.folder / "slurm.conf"))

    def start(self):
        munge = [f"--{what}={self.folder}/munge.{what.split('-')[0]}"
                 for what in ("socket", "key-file", "pid-file", "log-file", "seed-file")]
        subprocess.run(["mungekey", "--create", f"--keyfile={self.folder}/munge.key"], check=True)
        self.launch("munged", "--foreground", "--force", *munge)
        self.wait_for(lambda: (self.folder / "munge.socket").exists(), "munged")
        self.launch("slurmctld", "-D")
        self.launch("slurmd", "-D")
        self.wait_for(lambda: "idle" in self.run("sinfo", "-h", "-o", "%t").stdout, "a node")

    def launch(self, *words):
        with open(self.folder / (words[0] + ".err"), "wb") as error:
            self.daemons.append(subprocess.Popen(words, env=self.environment, stdout=error,
                                                 stderr=error, stdin=subprocess.DEVNULL))

    def stop(self):
        """In the reverse order; a daemon that does not end is killed."""
        self.run("scancel", "--user", getpass.getuser())
        for daemon in reversed(self.daemons):
            daemon.terminate()
            try:
                daemon.wait(timeout=20)
            except subprocess.TimeoutExpired:
                daemon.kill()
                daemon.wait()

    def run(self, *words, **more):
        return subprocess.run(list(map(str, words)), env=dict(self.environment, **more),
                              capture_output=True, text=True, check=False, timeout=60,
                              cwd=self.folder, stdin=subprocess.DEVNULL)

    def submit(self, *words, **more):
        """The number of the job."""
        done = self.run("sbatch", "--parsable", *words, **more)
        if done.returncode != 0:
            raise AssertionError(done.stderr)
        return done.stdout.strip()

    def is_over(self, job):
        return self.run("squeue", "-h", "-j", job).stdout.strip() == ""

    def wait_for(self, condition, what, seconds=120):
        end = time.monotonic() + seconds
        while not condition():
            if time.monotonic() > end:
                logs = "\n".join(path.read_text(errors="replace")[-2000:]
                                 for path in sorted(self.folder.glob("*.log")))
                raise AssertionError(f"{what}: not within {seconds} s\n{logs}")
            time.sleep(0.2)
