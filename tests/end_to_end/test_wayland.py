"""The recorder on a Wayland desktop (tests/with-wayland-desktop), where it sees the screen by its user's leave only."""
import json
import os
import pathlib
import signal
import subprocess
import tempfile
import time
import unittest

import numpy

from agent import Agent, Home, ask_bus
from harness import TestCase, pictures, plays, probe, stamps, until
from recorder_ui import CONTROL
from wayland_pointer import Mouse

PORTAL = "org.freedesktop.impl.portal.desktop.wlr"
GROUND = (0x30, 0x50, 0x70)
# From the middle of the camera's panel, which has the buttons during a recording.
STOP = (-16, 0)


def sway(*words):
    said = subprocess.run(["swaymsg", "--raw", *words], check=True, stdout=subprocess.PIPE, text=True).stdout
    return json.loads(said)


def nodes(node):
    yield node
    for child in node["nodes"] + node["floating_nodes"]:
        yield from nodes(child)


def window(title):
    """Where that window of ours is, (x, y, width, height), or None. Popups are not told of."""
    for node in nodes(sway("--type", "get_tree")):
        if node.get("app_id") == "com.keldra.KELDRA" and node["name"] == title and node.get("visible"):
            frame, content = node["rect"], node["window_rect"]
            return frame["x"] + content["x"], frame["y"] + content["y"], content["width"], content["height"]
    return None


def shown(title):
    return until(lambda: window(title), f'window "{title}"')


def screen(x, y, width, height):
    """What is on that part of the display."""
    said = subprocess.run(["grim", "-t", "ppm", "-g", f"{x},{y} {width}x{height}", "-"], check=True,
                          stdout=subprocess.PIPE).stdout
    return numpy.frombuffer(said[-width * height * 3:], numpy.uint8).reshape(height, width, 3)


def paint(colour):
    """Gives the desktop another ground, and waits until it is there."""
    sway("output", "HEADLESS-1", "bg", "#%02x%02x%02x" % colour, "solid_color")
    until(lambda: (screen(2, 2, 1, 1)[0, 0] == colour).all(), f"ground {colour}")


def has_notice():
    """A notice stands above the control panel, in its window."""
    x, y, width, _ = shown("KELDRA")
    return (screen(x + width // 2 - 100, y + 20, 200, 20) != screen(2, 2, 1, 1)).any()


class Portal:
    """The desktop's part in recordings, started anew with a dialog that does as it is told."""

    @staticmethod
    def process():
        owner = ask_bus("GetNameOwner", f"string:{PORTAL}")
        answer = owner and ask_bus("GetConnectionUnixProcessID", f"string:{owner}")
        return int(answer.split()[-1]) if answer else None

    @classmethod
    def kill(cls):
        """The one that is there, if any."""
        if process := cls.process():
            os.kill(process, signal.SIGKILL)
        until(lambda: not cls.process(), "end of the portal")

    def __init__(self, chooser):
        self._folder = tempfile.TemporaryDirectory()
        file = pathlib.Path(self._folder.name) / "xdg-desktop-portal-wlr/config"
        file.parent.mkdir()
        file.write_text("[screencast]\nmax_fps=60\n" + chooser)
        self._process = subprocess.Popen(["/usr/libexec/xdg-desktop-portal-wlr"], stderr=subprocess.DEVNULL, env={
            **os.environ, "XDG_CONFIG_HOME": self._folder.name, "LD_PRELOAD": os.environ["KELDRA_TEST_SCREEN_COPY"]})
        until(self.process, "portal")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.kill()
        self._process.wait()
        self._folder.cleanup()


AGREES = "chooser_type=none\noutput_name=HEADLESS-1\n"
REFUSES = "chooser_type=simple\nchooser_cmd=false\n"
ASKS = "chooser_type=simple\nchooser_cmd=touch %s; exec sleep 60\n"


class WaylandTest(TestCase):
    def setUp(self):
        super().setUp()
        self.home = self.enterContext(Home())
        if not Portal.process():
            self.enterContext(Portal(AGREES))
        # A factor for which Qt 6.4 knows no true size.
        sway("output", "HEADLESS-1", "scale", "1.5")
        paint(GROUND)
        area = sway("--type", "get_outputs")[0]["rect"]
        self.mouse = self.enterContext(Mouse(area["width"], area["height"]))
        self.agent = self.enterContext(Agent(self.home)).is_found()
        shown("KELDRA")
        until(has_notice, "notice of what this desktop does not allow")

    def dismiss_notice(self):
        x, y, width, height = shown("KELDRA")
        self.mouse.click(x + width // 2 + 187, y + height - 111)
        until(lambda: not has_notice(), "end of the notice")

    def press(self, name):
        x, y, _, height = shown("KELDRA")
        self.mouse.click(x + CONTROL[name][0], y + height - CONTROL[name][1])

    def start_recording(self):
        self.press("record")
        shown("countdown")
        shown("Camera")
        self.file = until(lambda: next(self.home.recordings.glob("*.mov"), None), "recording")

    def stop_recording(self):
        x, y, width, height = shown("Camera")
        self.mouse.click(x + width // 2 + STOP[0], y + height // 2 + STOP[1])
        until(lambda: window("Camera") is None and window("KELDRA"), "end of the recording")

    def test_what_cannot_be_is_told_and_a_display_is_recorded_as_it_is(self):
        for name in "area", "window":
            self.dismiss_notice()
            self.press(name)
            until(has_notice, f"refusal of the {name}")
        pressed = time.monotonic()
        self.start_recording()
        begun = time.monotonic()
        colours = (200, 30, 30), (30, 160, 30), (30, 30, 200)
        for colour in colours:
            paint(colour)
        ended = time.monotonic()
        self.stop_recording()
        self.assertTrue(plays(self.file))
        self.assertNotIn(b"moof", self.file.read_bytes())
        form, stream = probe(self.file)
        self.assertGreater(float(form["duration"]), ended - begun - 0.1)
        self.assertLess(float(form["duration"]), time.monotonic() - pressed)
        self.assertEqual((stream["width"], stream["height"]), (1280, 720))
        self.assertTaggedBT709(stream)
        self.assertRising(stamps(self.file))
        seen = [tuple(picture[0, 0].astype(int)) for picture in pictures(self.file, (2, 2, 2, 2))]
        for colour in colours:
            self.assertTrue(any(max(abs(a - b) for a, b in zip(colour, each)) <= 3 for each in seen),
                            f"{colour} in {set(seen)}")
        status, _, err = self.agent.end()
        self.assertEqual((status, err), (0, ""))

    def assertKept(self):
        """What was recorded until then is a movie among those that are kept."""
        kept = until(lambda: next((self.home.data / "KELDRA/RecordingRecovery").glob("*.mov"), None), "kept recording")
        self.assertTrue(plays(kept))
        self.assertGreater(len(stamps(kept)), 0)
        self.assertEqual(list(self.home.recordings.iterdir()), [])

    def refuse(self):
        """A press of the record button to no avail."""
        self.press("record")
        shown("countdown")
        shown("KELDRA")
        until(has_notice, "notice of the failure")

    def test_it_ends_while_the_desktop_asks(self):
        Portal.kill()
        asks = self.folder / "asks"
        with Portal(ASKS % asks):
            self.press("record")
            until(asks.exists, "dialog")
            self.assertEqual(self.agent.end(), (0, "", ""))

    def test_what_the_portal_does_is_told_and_what_was_recorded_is_kept(self):
        Portal.kill()
        self.refuse()
        with Portal(REFUSES):
            self.refuse()
        with Portal(AGREES):
            self.start_recording()
            paint((200, 30, 30))
            Portal.kill()
        shown("KELDRA")
        kept = until(lambda: next((self.home.data / "KELDRA/RecordingRecovery").glob("*.mov"), None), "kept recording")
        self.assertEqual(list(self.home.recordings.iterdir()), [])
        self.assertTrue(plays(kept))
        self.assertGreater(len(stamps(kept)), 0)
        status, said, err = self.agent.end()
        self.assertEqual((status, err), (0, ""))
        for words in ("The desktop ended the request to record the screen.", "Screen recording access was not granted",
                      "The screen's stream ended"):
            self.assertIn(words, said)


if __name__ == "__main__":
    unittest.main()
