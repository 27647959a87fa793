"""Do sound and picture stay together over a long recording? Flashes on the screen and beeps of a microphone whose clock runs fast,
and in another recording at the same time slow, are looked for in the file, minute by minute: a table for each clock, and a verdict.

    flash_and_beep.py [MINUTES [PPM...]]
"""
import concurrent.futures
import contextlib
import pathlib
import statistics
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "end_to_end"))
from devices import Device, beeps, flashes, offsets  # noqa: E402
from harness import Recording, Scene, sound  # noqa: E402
from test_effects import growing, wait  # noqa: E402

MINUTES, CLOCKS = 30, (200, -200)
MEDIAN, FARTHEST, DRIFT = 0.020, 0.050, 0.010


def measure(folder, minutes, ppm, left):
    """(moment of the file, how late) of each beep and of each flash, seconds; and what the log says."""
    name = f"microphone{ppm:+}"
    with Device("microphone", name, ppm=ppm, every=0.97) as microphone, \
            Scene("--rate", 2, "--geometry", f"640x320+{left}+0") as scene:
        recording = Recording(folder, "--area", f"{left},0,640,320", options=["--microphone", name])
        growing(recording, 1000)
        for _ in range(max(1, round(minutes * 2))):
            wait(30)
        path = recording.stop()
    begin = recording.begin()
    heard = beeps(sound(path))
    late = offsets([begin + moment for moment in heard], microphone.moments)
    return list(zip(heard, late)), flashes(path, scene, begin), recording.log


def of_minute(found, minute):
    return [late for moment, late in found if minute * 60 <= moment < minute * 60 + 60]


def judge(name, value, bound):
    print(f"{name:28} {value * 1000:8.2f} ms   of {bound * 1000:3.0f}   {'good' if value <= bound else 'BAD'}")
    return value <= bound


def tell(minutes, ppm, heard, seen, log):
    print(f"\nmicrophone {ppm:+} ppm, {minutes} min: {len(heard)} beeps, {len(seen)} flashes, "
          f"{log.count('gap detected')} gaps")
    print("".join(f"  {line}\n" for line in log.splitlines() if "[KELDRA Mic]" in line), end="")
    print("minute   beep late   flash late   apart (ms, medians)")
    apart = []
    for minute in range(max(1, int(minutes))):
        beep, flash = (statistics.median(of_minute(found, minute)) for found in (heard, seen))
        apart.append(beep - flash)
        print(f"{minute + 1:6} {beep * 1000:11.2f} {flash * 1000:12.2f} {apart[-1] * 1000:7.2f}")
    verdicts = [len(heard) > minutes * 55, len(seen) > minutes * 80]
    for name, found in (("beeps", heard), ("flashes", seen)):
        distances = [abs(late) for _, late in found]
        print(f"{name}, farthest at {max(found, key=lambda each: abs(each[1]))[0]:.2f} s")
        verdicts += [judge(f"{name}, median", statistics.median(distances), MEDIAN),
                     judge(f"{name}, farthest", max(distances), FARTHEST)]
    verdicts.append(judge("drift, first to last minute", abs(apart[-1] - apart[0]), DRIFT))
    return all(verdicts)


def main(words):
    minutes = float(words[0]) if words else MINUTES
    clocks = [int(word) for word in words[1:]] or CLOCKS
    with contextlib.ExitStack() as stack, concurrent.futures.ThreadPoolExecutor() as pool:
        folders = [stack.enter_context(tempfile.TemporaryDirectory()) for _ in clocks]
        found = pool.map(measure, folders, [minutes] * len(clocks), clocks, range(0, 1920, 640))
        return 0 if all([tell(minutes, ppm, *each) for ppm, each in zip(clocks, found)]) else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
