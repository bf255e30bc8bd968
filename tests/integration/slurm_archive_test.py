#!/usr/bin/python3
"""Scans an archive as a Slurm job array on a cluster of this one machine, which listens on loopback alone."""
import ctypes
import getpass
import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import tempfile
import time
import unittest

SCRIPT = os.environ["ZEL_SCAN_SBATCH"]
PROGRAM = pathlib.Path(os.environ["ZEL_MONITOR"])
TASKS = 4
PATIENCE_S = 120

SLURM_CONF = """
ClusterName=zel
SlurmctldHost=localhost(127.0.0.1)
SlurmctldPort={ctld_port}
SlurmdPort={slurmd_port}
AuthType=auth/munge
AuthInfo=socket={folder}/munge/socket
CommunicationParameters=NoCtldInAddrAny,NoInAddrAny
SlurmUser={user}
SlurmdUser={user}
StateSaveLocation={folder}/ctld
SlurmdSpoolDir={folder}/slurmd
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.pid
SlurmctldLogFile={folder}/slurmctld.log
SlurmdLogFile={folder}/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
MpiDefault=none
ReturnToService=2
SchedulerParameters=batch_sched_delay=0
SlurmdParameters=config_overrides
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
AccountingStorageType=accounting_storage/none
KillWait=20
NodeName=localhost NodeAddr=127.0.0.1 CPUs={tasks} State=UNKNOWN
PartitionName=main Nodes=ALL Default=YES MaxTime=INFINITE State=UP
"""


def wait_for(what, condition):
    """What `condition` gives once that is true."""
    end = time.monotonic() + PATIENCE_S
    while time.monotonic() < end:
        if answer := condition():
            return answer
        time.sleep(0.1)
    raise AssertionError(f"{what}: not within {PATIENCE_S} s")


def free_ports(count):
    sockets = [socket.socket() for _ in range(count)]
    for one in sockets:
        one.bind(("127.0.0.1", 0))
    ports = [one.getsockname()[1] for one in sockets]
    for one in sockets:
        one.close()
    return ports


def end_with_this_process():
    """For a child: also if nobody is left to stop it."""
    ctypes.CDLL(None).prctl(1, signal.SIGTERM)  # PR_SET_PDEATHSIG


class Cluster:
    """munged, slurmctld and slurmd in a folder of their own."""

    def __init__(self, folder):
        self.folder = folder
        self.daemons = []
        for name in ("munge", "ctld", "slurmd"):
            (folder / name).mkdir()
        (folder / "munge").chmod(0o755)
        key = folder / "munge/key"
        key.write_bytes(os.urandom(128))
        key.chmod(0o400)
        ctld_port, slurmd_port = free_ports(2)
        conf = folder / "slurm.conf"
        conf.write_text(SLURM_CONF.format(folder=folder, user=getpass.getuser(), tasks=TASKS, ctld_port=ctld_port,
                                          slurmd_port=slurmd_port))
        (folder / "cgroup.conf").write_text("CgroupPlugin=cgroup/v1\n")
        self.environment = {**os.environ, "SLURM_CONF": str(conf), "PATH": f"{PROGRAM.parent}:{os.environ['PATH']}"}

    def start(self):
        munge = self.folder / "munge"
        self.daemon("/usr/sbin/munged", "--foreground", "--force", "--key-file", munge / "key", "--socket", munge / "socket",
                    "--pid-file", munge / "pid", "--log-file", munge / "log", "--seed-file", munge / "seed")
        wait_for("munged", (munge / "socket").exists)
        self.daemon("/usr/sbin/slurmctld", "-D", "-c")
        self.daemon("/usr/sbin/slurmd", "-D", "-N", "localhost")
        wait_for("an idle node", lambda: "idle" in self.run("sinfo", "-h", "-o", "%T", check=False))

    def daemon(self, *command):
        with (self.folder / "daemons.log").open("ab") as log:
            self.daemons.append(subprocess.Popen(list(map(str, command)), env=self.environment, stdout=log, stderr=log,
                                                 preexec_fn=end_with_this_process))

    def stop(self):
        for daemon in reversed(self.daemons):
            daemon.send_signal(signal.SIGTERM)
            daemon.wait(60)

    def run(self, *command, check=True, **environment):
        done = subprocess.run(list(map(str, command)), env={**self.environment, **environment}, cwd=self.folder,
                              capture_output=True, text=True, timeout=PATIENCE_S, check=False)
        if check and done.returncode != 0:
            raise AssertionError(f"{command}: {done.returncode}, {done.stdout}{done.stderr}")
        return done.stdout.strip()

    def running(self):
        """The tasks that are queued or at work."""
        return self.run("squeue", "-h", "-r", "-o", "%F_%K").split()


class SlurmArchive(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="zel-slurm-")
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)
        self.folder.chmod(0o755)
        self.make_clips()
        self.cluster = Cluster(self.folder)
        self.addCleanup(self.cluster.stop)
        self.cluster.start()

    def make_clips(self):
        media = self.folder / "media"
        media.mkdir()
        graph = "testsrc=s=160x120:r=25:d=4,hue=h=360*t,drawbox=t=fill:c=black:enable='between(t,1,2.9)'"
        subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-f", "lavfi", "-i", graph, "-c:v", "mpeg4", media / "0.mkv"],
                       check=True)
        names = [media / f"{i}.mkv" for i in range(20)]
        for name in names[1:]:
            shutil.copy(names[0], name)
        names[7].write_bytes(names[0].read_bytes()[:5000])
        self.list = self.folder / "list"
        self.list.write_text("".join(f"{name}\n" for name in names))
        # Whoever takes this one up waits until it is there.
        self.late = names[13]
        self.late.rename(self.folder / "late")
        os.mkfifo(self.late)

    def submit(self, array, store, **environment):
        return self.cluster.run("sbatch", "--parsable", "--cpus-per-task=1", f"--array={array}", SCRIPT, self.list, store, **environment)

    def report(self, store):
        return json.loads(self.cluster.run(PROGRAM, "report", store, "--files-from", self.list, "--json", check=False))

    def test_array_that_was_cut_off_ends_with_the_report_of_one_process(self):
        store = self.folder / "store"
        job = self.submit(f"0-{TASKS - 1}", store)
        (waiting,) = wait_for("one task left", lambda: len(left := self.cluster.running()) == 1 and left)
        self.assertTrue(waiting.startswith(f"{job}_"))
        self.cluster.run("scancel", waiting)
        wait_for("the end of the task", lambda: not self.cluster.running())
        self.assertGreater(self.report(store)["totals"]["missing"], 0)

        self.late.unlink()
        (self.folder / "late").rename(self.late)
        before = {path: path.stat().st_ino for path in store.glob("??/*.json")}
        self.submit(waiting.partition("_")[2], store, SHARDS=str(TASKS))
        wait_for("the end of the task", lambda: not self.cluster.running())
        self.assertEqual({path: path.stat().st_ino for path in before}, before)  # none was scanned twice

        alone = self.folder / "alone"
        self.cluster.run(PROGRAM, "scan", "-q", "--files-from", self.list, "--store", alone, check=False)
        self.assertEqual(self.report(store), self.report(alone))
        self.assertEqual(self.report(store)["totals"]["incomplete"], 1)

    def test_merge_follows_the_array_and_passing_troubles_are_tried_again(self):
        self.late.unlink()
        (self.folder / "late").rename(self.late)
        store = self.folder / "store"
        tries = self.folder / "tries"
        program = self.folder / "zel-monitor"  # the first time, each task finds its disk gone
        program.write_text(f'#!/bin/sh\nmark={tries}.$SLURM_ARRAY_TASK_ID\n[ -e "$mark" ] || {{ touch "$mark"; exit 75; }}\n'
                           f'exec {PROGRAM} "$@"\n')
        program.chmod(0o755)
        path = f"{self.folder}:{self.cluster.environment['PATH']}"
        job = self.submit("0-1", store, PATH=path)
        merged = self.folder / "merged.json"
        self.cluster.run("sbatch", f"--dependency=afterany:{job}", "--wrap",
                         f"{PROGRAM} report {store} --files-from {self.list} --json -o {merged}")
        for task in range(2):  # Slurm would let them wait for two minutes; in the same second it starts nothing anew
            wait_for("another try", lambda: "BeginTime" in self.cluster.run("squeue", "-h", "-j", f"{job}_{task}", "-o", "%r"))
            self.cluster.run("scontrol", "update", f"JobId={job}_{task}", "StartTime=now+3")
        wait_for("the merged report", merged.exists)
        self.assertEqual(json.loads(merged.read_text())["totals"]["missing"], 0)


if __name__ == "__main__":
    unittest.main()
