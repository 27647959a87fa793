"""Microphone, camera and the whole PipeWire daemon, pulled out at random moments of recordings and put back: a table, and a verdict.

usage: unplug.py [--times 20] [--seed N]

What was heard while a microphone was there must be in the file, at its own time; the picture goes on whatever happens.
"""
import argparse
import os
import pathlib
import random
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "end_to_end"))
from devices import Device, beeps, flashes, offsets  # noqa: E402
from harness import Recording, Scene, sound, stamps  # noqa: E402
from test_effects import growing, wait  # noqa: E402

SERVER = pathlib.Path(__file__).resolve().parent.parent / "sound-server"
EVERY = 0.3
# Seconds: how far a beep may be from its report; how long a device that comes back may take to be heard; how far a
# picture may be from its own.
LATE, COMING_BACK, PICTURE_LATE = 0.050, 1.5, 0.2


class Daemon:
    """The session's PipeWire, which can be killed and started again."""

    def __init__(self):
        self._process = subprocess.Popen([SERVER], stdout=subprocess.PIPE, text=True)
        if self._process.stdout.readline() != "up\n":
            raise SystemExit("the sound server did not start")

    def end(self):
        self._process.terminate()
        self._process.wait()
        self._process.stdout.close()


class Session:
    def __init__(self):
        self.daemon = Daemon()
        self.microphones, self.cameras = [], []
        self.plug_in("microphone")
        self.plug_in("camera")

    def plug_in(self, kind):
        if kind == "microphone":
            self.microphones.append(Device("microphone", every=EVERY))
        else:
            self.cameras.append(Device("camera", every=0))

    def pull_out(self, what):
        if what != "camera":
            self.microphones[-1].unplug()
        if what != "microphone":
            self.cameras[-1].unplug()
        if what == "daemon":
            self.daemon.end()

    def put_back(self, what):
        if what == "daemon":
            self.daemon = Daemon()
        if what != "camera":
            self.plug_in("microphone")
        if what != "microphone":
            self.plug_in("camera")

    def end(self):
        self.pull_out("daemon")


def faults_of(path, recording, session, scene, last):
    """What is wrong with a recording that was stopped at the host time `last`."""
    faults = []
    begin = recording.begin()
    samples, times = sound(path), stamps(path)
    if len(samples) / 48000 < times[-1] - 0.1:
        faults.append("the sound ends early")
    heard = [begin + moment for moment in beeps(samples)]
    # A beep that was sounding when the device was pulled out was not reported any more.
    reported = [moment for microphone in session.microphones
                for moment in (*microphone.moments, microphone.moments[-1] + EVERY)]
    farthest = max(map(abs, offsets(heard, reported)), default=0)
    if farthest > LATE:
        faults.append(f"a beep is {farthest * 1000:.0f} ms off")
    for number, microphone in enumerate(session.microphones):
        beginning = begin if number == 0 else microphone.moments[0] + COMING_BACK
        wanted = [moment for moment in microphone.moments[:-1] if beginning <= moment < last - 0.1]
        lost = [moment for moment in wanted if not any(abs(moment - each) < LATE for each in heard)]
        if lost:
            faults.append(f"{len(lost)} beeps of {len(wanted)} are lost")
    late = max((abs(late) for _, late in flashes(path, scene, begin)), default=PICTURE_LATE + 1)
    if late > PICTURE_LATE:
        faults.append(f"a picture is {late * 1000:.0f} ms off")
    return faults


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--times", type=int, default=20)
    parser.add_argument("--seed", type=int, default=random.randrange(2**32))
    arguments = parser.parse_args()
    chance = random.Random(arguments.seed)
    print(f"{arguments.times} times  seed {arguments.seed}\n what        after s  away s  verdict", flush=True)
    bad = 0
    with tempfile.TemporaryDirectory() as runtime:
        os.environ["XDG_RUNTIME_DIR"] = runtime
        for number in range(arguments.times):
            what = ("microphone", "camera", "daemon")[number % 3]
            before, away = chance.uniform(0.5, 3), chance.uniform(0.1, 2)
            session = Session()
            with tempfile.TemporaryDirectory() as folder, Scene("--geometry", "800x480+0+0", "--rate", 10) as scene:
                recording = Recording(folder, "--area", "0,0,800,480", options=["--microphone", "--camera"])
                growing(recording, 1000)
                wait(before)
                session.pull_out(what)
                wait(away)
                session.put_back(what)
                wait(COMING_BACK + 2)
                last = session.microphones[-1].moments[-1]
                path = recording.stop()
                session.end()
                faults = faults_of(path, recording, session, scene, last)
            bad += bool(faults)
            print(f" {what:10} {before:8.2f} {away:7.2f}  {'; '.join(faults) or 'good'}", flush=True)
    print(f"{arguments.times - bad} of {arguments.times} good")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
