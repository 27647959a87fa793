"""Recordings whose disk fills up at random moments: a table of how each ended, and a verdict.

usage: full_disk.py [--rounds 20] [--seed N]
"""
import argparse
import pathlib
import random
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "end_to_end"))
from full_disk import MEGABYTE, FilledTake, SmallDisk  # noqa: E402


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--rounds", type=int, default=20)
    parser.add_argument("--seed", type=int, default=random.randrange(2**32))
    arguments = parser.parse_args()
    chance = random.Random(arguments.seed)
    print(f"{arguments.rounds} full disks  seed {arguments.seed}", flush=True)
    print("round  after s      left  ended        kept as                pictures lost s  sound lost s  verdict")
    bad = 0
    for number in range(1, arguments.rounds + 1):
        # Nothing at all, a few pages, or less than the recorder wants.
        left = chance.choice([0, 0, chance.randrange(200_000), chance.randrange(64 * MEGABYTE)])
        seconds = chance.uniform(0.2, 6)
        with tempfile.TemporaryDirectory() as folder:
            disk = SmallDisk.make(folder, 400)
            if disk is None:
                sys.exit("nobody may make a disk here: run it as root, or where user namespaces are allowed")
            with disk:
                data = (disk.path if chance.random() < 0.5 else pathlib.Path(folder)) / "data"
                take = FilledTake(disk, data, seconds, left)
        bad += bool(take.faults)
        ended = "as a stop" if take.status == 0 else "as an error"
        kept = "nothing" if take.path is None else ("hidden beside" if take.path.name.startswith(".") else
                                                    "recovered" if take.status else
                                                    "ordinary movie" if take.isOrdinary else "growing file")
        lost = "" if take.path is None else f"{take.lost:16.2f} {take.lost_sound:13.2f}"
        print(f"{number:5} {seconds:8.2f} {left:9}  {ended:11}  {kept:20} {lost:30}  {'; '.join(take.faults) or 'good'}",
              flush=True)
    print(f"{arguments.rounds - bad} of {arguments.rounds} good")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
