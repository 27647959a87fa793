"""Recordings that are killed at random moments: a table of what each lost, and a verdict.

usage: kills.py [--kills 100] [--seed N] [--microphone] [--camera]

Without a microphone the clicks are the sound. Every tenth kill comes while the file is finished.
"""
import argparse
import pathlib
import random
import statistics
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "end_to_end"))
from harness import BUILD, run, until  # noqa: E402
from kills import ALLOWED, SLOW_FINISH, KilledTake  # noqa: E402


def start_device(kind, *words):
    """A device that is a program, once the recorder can see it."""
    device = subprocess.Popen([BUILD / f"keldra_test_{kind}", *words], stdout=subprocess.DEVNULL)
    until(lambda: kind in run("sources")[1].lower(), kind)
    return device


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--kills", type=int, default=100)
    parser.add_argument("--seed", type=int, default=random.randrange(2**32))
    parser.add_argument("--microphone", action="store_true")
    parser.add_argument("--camera", action="store_true")
    arguments = parser.parse_args()
    chance = random.Random(arguments.seed)
    kinds = [kind for kind in ("microphone", "camera") if getattr(arguments, kind)]
    devices = [start_device(kind, *(["--signal", "sine"] if kind == "microphone" else [])) for kind in kinds]
    options = [f"--{kind}" for kind in kinds]
    print(f"{arguments.kills} kills  seed {arguments.seed}  sound: {'microphone' if arguments.microphone else 'clicks'}"
          f"{'  with camera' if arguments.camera else ''}", flush=True)
    print(" kill  after s  when       pictures lost s  sound lost s  verdict")
    pictures, sounds, bad = [], [], 0
    for number in range(1, arguments.kills + 1):
        with tempfile.TemporaryDirectory() as folder:
            finishing = number % 10 == 0
            seconds = chance.uniform(1.5, 8)
            take = KilledTake(folder, seconds, options, clicks=not arguments.microphone, while_finishing=finishing,
                              environment=SLOW_FINISH if finishing else None)
        pictures.append(take.lost_pictures)
        sounds.append(take.lost_sound)
        bad += bool(take.faults)
        print(f"{number:5} {seconds:8.2f}  {'finishing' if finishing else 'recording'} {take.lost_pictures:16.2f} "
              f"{take.lost_sound:13.2f}  {'; '.join(take.faults) or 'good'}", flush=True)
    for device in devices:
        device.terminate()
        device.wait()
    for name, lost in (("pictures", pictures), ("sound", sounds)):
        print(f"{name:8} lost: median {statistics.median(lost):.2f} s, most {max(lost):.2f} s (allowed {ALLOWED} s)")
    print(f"{arguments.kills - bad} of {arguments.kills} good")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
