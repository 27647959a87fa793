"""Runs the program and the scene as a user would, and reads movies with another program's decoder.

Everything here needs a display (tests/with-desktop gives one) and KELDRA_BUILD, the folder of the built programs.
"""
import contextlib
import json
import os
import pathlib
import re
import select
import signal
import subprocess
import tempfile
import threading
import time
import unittest

import numpy

BUILD = pathlib.Path(os.environ["KELDRA_BUILD"])
KELDRA = str(BUILD / "keldra")
SCENE = str(BUILD / "keldra_scene")
LAYOUT = json.loads(subprocess.run([SCENE, "--layout"], check=True, stdout=subprocess.PIPE).stdout)
DEADLINE = 60
# Puts a library between the recorder and its disk; tests/faults/DiskFaults.cpp says what it can do.
FAULTS = {"LD_PRELOAD": str(BUILD / "tests" / "keldra_disk_faults.so"),
          # A sanitizer that comes after it still does its work.
          "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0"}


def until(condition, what, seconds=DEADLINE):
    """Waits for a condition of the world outside, which tells nobody when it changes."""
    end = time.monotonic() + seconds
    while not (value := condition()):
        if time.monotonic() > end:
            raise AssertionError(f"no {what} within {seconds} s")
        time.sleep(0.01)
    return value


def wait(seconds):
    """Lets the world outside go on."""
    end = time.monotonic() + seconds
    until(lambda: time.monotonic() > end, "passing of time", seconds + DEADLINE)


def run(*arguments, environment=None):
    """Runs keldra to its end; status, standard output and standard error."""
    done = subprocess.run([KELDRA, *map(str, arguments)], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          timeout=DEADLINE, env={**os.environ, **(environment or {})})
    return done.returncode, done.stdout, done.stderr


class Scene:
    """A scene on the screen, and what it says it showed: (number, CLOCK_MONOTONIC seconds)."""

    def __init__(self, *options):
        self.shown = []
        self.clicks = []
        self._process = subprocess.Popen([SCENE, "--log", *map(str, options)], stdout=subprocess.PIPE, text=True)
        self.window = int(self._process.stdout.readline().split()[2])
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def _read(self):
        for line in self._process.stdout:
            if line.startswith("# click"):
                self.clicks.append(int(line.split()[2]) / 1000)
                continue
            number, microseconds = line.split()
            self.shown.append((int(number), int(microseconds) / 1e6))

    def __enter__(self):
        until(lambda: self.shown, "first picture of the scene")
        return self

    def __exit__(self, *_):
        self._process.terminate()
        self._process.wait()
        self._reader.join()
        self._process.stdout.close()

    def standing(self, seconds):
        """Numbers that stood on the screen for at least so long, in order."""
        return [number for (number, begin), (_, end) in zip(self.shown, self.shown[1:]) if end - begin >= seconds]

    def when(self, number):
        return next(moment for shown, moment in self.shown if shown == number)


class Recording:
    """A `keldra record` that runs until it is stopped or killed."""

    def __init__(self, folder, *source, options=(), environment=None):
        self.folder = pathlib.Path(folder)
        self.process = subprocess.Popen([KELDRA, "record", *map(str, source), "--output-dir", str(folder), *options],
                                        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                        env={**os.environ, **(environment or {})})

    def file(self):
        """The growing file, once it is there."""
        return until(lambda: next(self.folder.glob("KELDRA-*.mov"), None), "recording in the folder")

    def interrupt(self, number=signal.SIGINT):
        self.process.send_signal(number)

    def stop(self, number=signal.SIGINT):
        self.interrupt(number)
        out, err = self.process.communicate(timeout=DEADLINE)
        if self.process.returncode != 0:
            raise AssertionError(f"record ended with {self.process.returncode}: {err}")
        self.log = err
        return pathlib.Path(out.strip().splitlines()[-1])

    def begin(self):
        """The host time of the file's zero, once it has ended."""
        return float(re.search(r"began at t=([0-9.]+)", self.log).group(1))

    def kill(self):
        self.process.kill()
        self.process.communicate()
        return time.monotonic()


def record(folder, *source, seconds, options=()):
    status, out, err = run("record", *source, "--seconds", seconds, "--output-dir", folder, *options)
    if status != 0:
        raise AssertionError(f"record ended with {status}: {err}")
    return pathlib.Path(out.strip().splitlines()[-1])


def probe(path):
    """ffprobe's word on the format and the first video stream."""
    said = subprocess.run(["ffprobe", "-v", "error", "-show_format", "-show_streams", "-select_streams", "v:0",
                           "-of", "json", str(path)], check=True, stdout=subprocess.PIPE).stdout
    said = json.loads(said)
    return said["format"], said["streams"][0]


def plays(path):
    """Whether every track can be decoded from beginning to end."""
    done = subprocess.run(["ffmpeg", "-nostdin", "-v", "fatal", "-i", str(path), "-map", "0", "-f", "null", "-"])
    return done.returncode == 0


def stamps(path):
    """When each picture is shown, in seconds of the file."""
    said = subprocess.run(["ffprobe", "-v", "error", "-select_streams", "v:0", "-show_entries", "frame=pts_time",
                           "-of", "csv=p=0", str(path)], check=True, stdout=subprocess.PIPE, text=True).stdout
    return [float(line.strip(",")) for line in said.split() if line.strip(",")]


def pictures(path, area=None, picture_filter=None):
    """Every picture of a movie as an array (frames, height, width, 3) of RGB, cut to area (x, y, width, height)."""
    _, stream = probe(path)
    x, y, width, height = area or (0, 0, stream["width"], stream["height"])
    filters = ([picture_filter] if picture_filter else []) + [
        "scale=in_color_matrix=bt709:in_range=tv:flags=accurate_rnd+full_chroma_int", "format=rgb24",
        f"crop={width}:{height}:{x}:{y}"]
    raw = subprocess.run(["ffmpeg", "-nostdin", "-v", "fatal", "-i", str(path), "-vf", ",".join(filters), "-fps_mode", "passthrough",
                          "-f", "rawvideo", "-"], check=True, stdout=subprocess.PIPE).stdout
    return numpy.frombuffer(raw, numpy.uint8).reshape(-1, height, width, 3)


def number_in(picture, row, origin=(0, 0)):
    """The number painted as blocks in a picture, or None when its parity is wrong."""
    layout = LAYOUT[row]
    size = LAYOUT["block"]
    y = origin[1] + layout["y"] + size // 2
    bits = []
    for index in range(layout["bits"] + 1):
        x = origin[0] + layout["x"] + index * size + size // 2
        bits.append(int(picture[y - 2:y + 2, x - 2:x + 2].mean() > 127))
    if sum(bits) % 2 != 0:
        return None
    return int("".join(map(str, bits[:-1])), 2)


def sound(path, track=0):
    """A sound track's samples as floats, one channel."""
    raw = subprocess.run(["ffmpeg", "-nostdin", "-v", "fatal", "-i", str(path), "-map", f"0:a:{track}", "-ac", "1",
                          "-f", "f32le", "-"], check=True, stdout=subprocess.PIPE).stdout
    return numpy.frombuffer(raw, numpy.float32)


def onsets(samples, gap=0.1, rate=48000):
    """Seconds at which sound begins after so much silence; the samples of a click begin with one zero."""
    places = numpy.flatnonzero(samples)
    firsts = [n for before, n in zip([-rate, *places], places) if n - before > gap * rate]
    return [(n - 1) / rate for n in firsts]


def xdotool(*words):
    subprocess.run(["xdotool", *map(str, words)], check=True)


class DisplayMode:
    """Another size of the display while the context lasts, set as its user would."""

    def __init__(self, width, height):
        self.name = f"{width}x{height}"
        timings = (50, width, width + 50, width + 100, width + 150, height, height + 5, height + 10, height + 15)
        modes = subprocess.run(["xrandr"], check=True, stdout=subprocess.PIPE, text=True).stdout
        self.before = re.search(r"(\S+)\s+[0-9.]+\*", modes).group(1)
        if f" {self.name} " not in modes:
            self._xrandr("--newmode", self.name, *timings)
            self._xrandr("--addmode", "screen", self.name)

    def __enter__(self):
        self._xrandr("--output", "screen", "--mode", self.name)
        return self

    def __exit__(self, *_):
        self._xrandr("--output", "screen", "--mode", self.before)

    @staticmethod
    def _xrandr(*words):
        subprocess.run(["xrandr", *map(str, words)], check=True)


def numbers_of(path, origin=(0, 0)):
    """The scene's number in every picture of a recording; the scene's corner lies at origin."""
    layout = LAYOUT["number"]
    size = LAYOUT["block"]
    width = layout["x"] + (layout["bits"] + 1) * size + size
    area = (origin[0], origin[1], width + width % 2, layout["y"] + 2 * size)
    return [number_in(picture, "number") for picture in pictures(path, area)]


def content_in_frame(window):
    """Where a window's content begins in its frame."""
    said = subprocess.run(["xwininfo", "-tree", "-id", str(window)], check=True, stdout=subprocess.PIPE, text=True).stdout
    parent = int(re.search(r"Parent window id: (\w+)", said).group(1), 0)
    root = int(re.search(r"Root window id: (\w+)", said).group(1), 0)
    if parent == root:
        return 0, 0
    said = subprocess.run(["xwininfo", "-id", str(window)], check=True, stdout=subprocess.PIPE, text=True).stdout
    x, y = (int(re.search(rf"Relative upper-left {axis}:\s+(-?\d+)", said).group(1)) for axis in "XY")
    outer = content_in_frame(parent)
    return x + outer[0], y + outer[1]


def boxes(path):
    """The types of a movie's top-level boxes, in order."""
    data = pathlib.Path(path).read_bytes()
    types, offset = [], 0
    while offset + 8 <= len(data):
        size = int.from_bytes(data[offset:offset + 4], "big")
        types.append(data[offset + 4:offset + 8].decode("latin-1"))
        if size == 1:
            size = int.from_bytes(data[offset + 8:offset + 16], "big")
        if size == 0:
            break
        offset += size
    return types


class TestCase(unittest.TestCase):
    """Gives each test a folder of its own and the judgements that many share."""

    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))

    def enterContext(self, context):
        """As Python 3.11's own, for older ones."""
        stack = getattr(self, "_stack", None)
        if stack is None:
            self._stack = stack = contextlib.ExitStack()
            self.addCleanup(stack.close)
        return stack.enter_context(context)

    def assertColours(self, picture, origin=(0, 0), scale=1.0):
        """The flat patches are there within 3 of 255; the scene's corner lies at origin, scaled by scale."""
        for patch in LAYOUT["patches"]:
            centre_x = origin[0] + (patch["x"] + patch["width"] / 2) * scale
            centre_y = origin[1] + (patch["y"] + patch["height"] / 2) * scale
            seen = picture[int(centre_y) - 4:int(centre_y) + 4, int(centre_x) - 4:int(centre_x) + 4].reshape(-1, 3)
            wanted = [int(patch["rgb"].lstrip("#")[i:i + 2], 16) for i in (0, 2, 4)]
            off = numpy.abs(seen.astype(int) - wanted).max()
            self.assertLessEqual(off, 3, f"{patch['name']}: {seen.mean(axis=0)} for {wanted}")

    def assertRising(self, times):
        self.assertTrue(all(a < b for a, b in zip(times, times[1:])), "stamps rise strictly")

    def assertTaggedBT709(self, stream):
        for tag in ("color_space", "color_transfer", "color_primaries"):
            self.assertEqual(stream.get(tag), "bt709", tag)
        self.assertEqual(stream.get("color_range"), "tv")

    def assertOneLine(self, err, *words):
        """An error is one line that says what is wrong."""
        self.assertRegex(err, r"\Akeldra: [^\n]+\n\Z")
        for word in words:
            self.assertIn(word, err)
