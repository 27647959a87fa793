"""Does a long recording stay as small as it was? A moving scene with microphone, camera and all effects: the memory of the process,
minute by minute, and a verdict. In the first minute the machine is kept busy, so that all that waits somewhere has waited once:
from then on only a leak can grow.

    memory.py [MINUTES]
"""
import contextlib
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "end_to_end"))
from devices import Device  # noqa: E402
from harness import Recording, Scene, xdotool  # noqa: E402
from test_effects import growing, wait  # noqa: E402

MINUTES, SETTLED, STRETCH, GROWTH = 40, 5, 10, 1.05


def resident(pid):
    """Bytes of memory that the process holds."""
    return int(pathlib.Path(f"/proc/{pid}/statm").read_text().split()[1]) * 4096


@contextlib.contextmanager
def busy_machine():
    burners = [subprocess.Popen(["sh", "-c", "while :; do :; done"]) for _ in range(2 * os.cpu_count())]
    try:
        yield
    finally:
        for burner in burners:
            burner.kill()
            burner.wait()


def main(words):
    minutes = int(words[0]) if words else MINUTES
    sizes = []
    with tempfile.TemporaryDirectory() as folder, Device("microphone") as microphone, Device("camera") as camera, \
            Scene("--rate", 20, "--geometry", "640x320+0+0") as _:
        recording = Recording(folder, "--area", "0,0,640,320",
                              options=["--microphone", microphone.name, "--camera", camera.name, "--highlight", "--clicks",
                                       "--click-sound", "soft"])
        growing(recording, 1000)
        for minute in range(1, minutes + 1):
            with busy_machine() if minute == 1 else contextlib.nullcontext():
                looks = []
                for second in range(12):
                    xdotool("mousemove", 100 + 40 * second, 150, "click", 1)
                    wait(5)
                    looks.append(resident(recording.process.pid))
            # Of a moment in which much is on its way the next look knows nothing.
            sizes.append(statistics.median(looks))
            print(f"{minute:3} min {sizes[-1] / 1e6:7.1f} MB, at most {max(looks) / 1e6:.1f}", flush=True)
        recording.stop()
    # How much is on its way differs from minute to minute; a leak only grows.
    settled, last = sizes[SETTLED:SETTLED + STRETCH], sizes[-STRETCH:]
    growth = statistics.median(last) / statistics.median(settled or sizes)
    verdict = "good" if growth <= GROWTH else "BAD"
    print(f"the last {STRETCH} minutes beside those after the {SETTLED}th: {growth:.3f} of at most {GROWTH}   {verdict}")
    return 0 if growth <= GROWTH else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
