"""Runs commands and tells what they cost; shared by the benchmarks here."""
import os
import pathlib
import statistics
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build" / "release"
KELDRA = str(BUILD / "keldra")
SCENE = str(BUILD / "keldra_scene")


class Cost:
    def __init__(self, wall, cpu, memory):
        self.wall, self.cpu, self.memory = wall, cpu, memory


def run(command, environment=None, quiet=True):
    """Wall and CPU seconds and peak memory (bytes) of a command and all its children."""
    output = subprocess.DEVNULL if quiet else None
    begin = time.monotonic()
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output, stderr=output,
                               env={**os.environ, **(environment or {})})
    _, status, usage = os.wait4(process.pid, 0)
    wall = time.monotonic() - begin
    if status != 0:
        sys.exit(f"failed with status {os.waitstatus_to_exitcode(status)}: {' '.join(command)}")
    return Cost(wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024)


def alternate(first, second, rounds):
    """Runs two commands in turn, so that a machine that slows down slows both; the costs of each."""
    costs = ([], [])
    for _ in range(rounds):
        for index, command in enumerate((first, second)):
            costs[index].append(run(command))
    return costs


def median(costs, field):
    return statistics.median(getattr(cost, field) for cost in costs)


def median_ratio(ours, theirs, field):
    """The median of the ratios, pair by pair."""
    return statistics.median(getattr(a, field) / getattr(b, field) for a, b in zip(ours, theirs))


def processor_seconds(pid):
    """CPU seconds that a living process has used."""
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")
