"""How late the sound of a click is in a recording, over many clicks: one table, and a verdict."""
import pathlib
import random
import statistics
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "end_to_end"))
from harness import Recording, Scene, onsets, sound, until, xdotool  # noqa: E402

CLICKS = 120
EARLIEST, MEDIAN, NINETY_FIFTH, LATEST = -0.001, 0.015, 0.026, 0.060


def latenesses(folder, seed):
    chance = random.Random(seed)
    with Scene("--rate", 30) as scene:
        xdotool("mousemove", 700, 200)
        recording = Recording(folder, "--display", 1, options=["--click-sound", "classic", "--clicks"])
        path = recording.file()
        until(lambda: path.stat().st_size > 50_000, "growth of the file")
        for _ in range(CLICKS):
            count = len(scene.clicks)
            xdotool("click", 1)
            until(lambda: len(scene.clicks) > count, "click in the scene")
            pause = time.monotonic() + chance.uniform(0.22, 0.4)
            until(lambda: time.monotonic() > pause, "pause")
        path = recording.stop()
        heard = [recording.begin() + second for second in onsets(sound(path))]
        if len(heard) != CLICKS:
            raise SystemExit(f"{len(heard)} of {CLICKS} clicks are heard")
        return sorted(found - made for made, found in zip(scene.clicks, heard))


def main():
    seed = random.randrange(2**32)
    with tempfile.TemporaryDirectory() as folder:
        late = latenesses(folder, seed)
    median, most = statistics.median(late), late[int(len(late) * 0.95)]
    print(f"clicks {CLICKS}  seed {seed}")
    isGood = True
    for name, value, low, high in (("earliest", late[0], EARLIEST, LATEST), ("median", median, EARLIEST, MEDIAN),
                                   ("95 of 100", most, EARLIEST, NINETY_FIFTH), ("latest", late[-1], EARLIEST, LATEST)):
        good = low <= value <= high
        isGood &= good
        print(f"{name:10} {value * 1000:7.2f} ms   {'good' if good else 'BAD'}")
    return 0 if isGood else 1


if __name__ == "__main__":
    sys.exit(main())
