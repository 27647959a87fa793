"""Microphones and cameras that are programs, and what a recording made of them."""
import os
import resource
import subprocess
import threading

import numpy

from harness import BUILD, numbers_of, stamps


def is_prompt():
    """Whether sound goes before all else on this machine; where it may not, a busy one loses some before anybody records it."""
    return os.geteuid() == 0 or resource.getrlimit(resource.RLIMIT_RTPRIO)[1] > 0


class Device:
    """A device that is plugged in until the block ends or unplug() is called, and the moments it reports: CLOCK_MONOTONIC seconds."""

    def __init__(self, kind, name=None, **options):
        self.name = name or f"keldra-test-{kind}"
        self.moments = []
        words = [f"--{option}={value}".split("=", 1) for option, value in options.items()]
        command = [str(BUILD / f"keldra_test_{kind}"), "--name", self.name, *(word for pair in words for word in pair)]
        self._process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
        if self._process.stdout.readline() != "up\n":
            raise AssertionError(f"the {kind} did not start")
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def _read(self):
        for line in self._process.stdout:
            self.moments.append(int(line.split()[1]) / 1e6)

    def unplug(self):
        self._process.terminate()
        self._process.wait()
        self._reader.join()
        self._process.stdout.close()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if not self._process.stdout.closed:
            self.unplug()


def beeps(samples, rate=48000):
    """Seconds at which a beep begins; a resampled one rings a little before."""
    loud = numpy.flatnonzero(numpy.abs(samples) > 0.25)
    return [n / rate for before, n in zip([-rate, *loud], loud) if n - before > rate // 10]


def offsets(found, reported):
    """How late each of what was found is, by the report nearest to it."""
    reported = numpy.asarray(reported)
    return [moment - reported[numpy.abs(reported - moment).argmin()] for moment in found]


def flashes(path, scene, begin):
    """Each change of the scene in a file that begins at that host time: (moment of the file, how late), seconds."""
    found, seen = [], None
    for moment, number in zip(stamps(path), numbers_of(path)):
        if number is not None and number != seen and seen is not None:
            found.append((moment, begin + moment - scene.when(number)))
        seen = number if number is not None else seen
    return found
