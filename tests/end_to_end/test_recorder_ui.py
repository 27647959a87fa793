"""From the tray to a finished file with nothing but a mouse."""
import configparser
import subprocess

from agent import Agent, Home
from devices import Device
from harness import Scene, TestCase, content_in_frame, numbers_of, pictures, plays, probe, until, wait, xdotool
from recorder_ui import (CONTROL, SETTINGS, click, drag, escape, escape_selection, gone, has_keyboard, pick_area, press, shown,
                         start_recording, stop_recording, window)

GROUND = 0x60


class RecorderUITest(TestCase):
    def setUp(self):
        super().setUp()
        xdotool("mousemove", 960, 300)
        self.home = self.enterContext(Home(showClickIndicators="false"))
        self.agent = self.enterContext(Agent(self.home)).is_found()
        shown("KELDRA")

    def files(self):
        return sorted(self.home.recordings.glob("*.mov"))

    def taken(self):
        """The recording that was just saved; its panel is dismissed."""
        self.assertEqual(len(self.files()), 1)
        path = self.files()[0]
        self.assertTrue(plays(path))
        x, y, width, height = shown("Recording saved")
        xdotool("mousemove", x + width - 22, y + height // 2, "click", 1)
        gone("Recording saved")
        return path

    def size(self, path):
        _, stream = probe(path)
        return stream["width"], stream["height"]

    def settings(self):
        read = configparser.ConfigParser()
        read.optionxform = str
        read.read(self.home.settings)
        return {key.removeprefix("preferences."): value for key, value in read["General"].items()}

    def off_ground(self, picture):
        """How many pixels of it are not of the scene's ground."""
        return (abs(picture.astype(int) - GROUND).max(axis=2) > 6).sum()

    def test_an_area_is_picked_adjusted_recorded_and_kept(self):
        with Device("microphone"), Device("camera"):
            pick_area((300, 200), (700, 500))
            drag((700, 500), (780, 560))
            start_recording()
            self.assertIsNone(window("selection-preview"))
            xdotool("mousemove", 400, 300, "click", 1)
            press("microphone")
            press("camera")
            shown("Camera")
            wait(1.5)
            stop_recording()
            path = self.taken()
            press("camera")
            gone("Camera")
        self.assertEqual(self.size(path), (480, 360))
        self.assertEqual(self.settings()["microphoneEnabled"], "true")

    def test_a_display_is_recorded_without_our_windows(self):
        # A ground of one colour, but for what the scene tells at its upper left, and its lower half.
        with Scene("--managed", "--still", "--geometry", "1920x1080+0+0"):
            x, y, _, _ = shown("KELDRA")
            drag((x + 300, y + 3), (1200, 303))
            until(lambda: abs(window("KELDRA")[1] - 300) < 20, "control panel where it was dragged")
            press("display")
            shown("selection-overlay")
            xdotool("mousemove", 1400, 700, "click", 1)
            gone("selection-overlay")
            start_recording()
            press("settings")
            shown("Settings")
            wait(1)
            press("settings")
            gone("Settings")
            xdotool("mousemove", 1400, 700)
            wait(1)
            stop_recording()
            path = self.taken()
        self.assertEqual(self.size(path), (1920, 1080))
        # At the end the pointer comes back to the panel; and where it was before, an encoder in haste leaves a few pixels.
        self.assertLessEqual(min(self.off_ground(picture) for picture in pictures(path, (700, 170, 1200, 360))[-40:]), 20)

    def test_a_window_is_picked(self):
        with Scene("--managed", "--geometry", "640x320+200+150", "--rate", 20) as scene:
            origin = content_in_frame(scene.window)
            press("window")
            shown("selection-overlay")
            xdotool("mousemove", 500, 300, "click", 1)
            gone("selection-overlay")
            shown("selection-preview")
            start_recording()
            stop_recording()
            path = self.taken()
        numbers = numbers_of(path, origin)
        self.assertNotIn(None, numbers)
        self.assertGreater(numbers[-1] - numbers[0], 10)

    def test_every_setting_is_kept(self):
        press("settings")
        shown("Settings")
        for name in ("show clicks", "click intensity", "click sound", "classic", "highlight", "intensity", "size",
                     "10 seconds", "low", "share usage"):
            click("Settings", SETTINGS[name])
        until(lambda: self.settings().get("analyticsEnabled") == "true", "last setting")
        settings = self.settings()
        self.assertEqual({name: settings[name] for name in ("showClickIndicators", "clickSoundEnabled", "clickSoundStyle",
                                                            "showCursorHighlight", "countdownSeconds", "recordingQuality")},
                         {"showClickIndicators": "true", "clickSoundEnabled": "true", "clickSoundStyle": "classic",
                          "showCursorHighlight": "true", "countdownSeconds": "10", "recordingQuality": "low"})
        self.assertAlmostEqual(float(settings["clickIndicatorIntensity"]), 1.6, delta=0.1)
        self.assertLess(float(settings["cursorHighlightIntensity"]), 0.5)
        self.assertGreater(float(settings["cursorHighlightSize"]), 64)
        # A dialog that is cancelled changes nothing and brings the settings back.
        click("Settings", SETTINGS["save to"])
        shown("Recording folder")
        escape("Recording folder")
        shown("Settings")
        self.assertEqual(self.settings()["outputDirectoryPath"], str(self.home.recordings))
        # A click elsewhere closes them.
        press("area")
        shown("selection-overlay")
        escape_selection()
        self.assertIsNone(window("Settings"))

    def test_quitting_in_mid_recording_asks_and_finishes_the_file(self):
        pick_area((300, 200), (700, 500))
        start_recording()
        press("quit")
        x, y, width, height = shown("Quit")
        xdotool("mousemove", x + width // 4, y + height - 30, "click", 1)
        gone("Quit")
        self.assertIsNone(self.agent.process.poll(), "no means no")
        press("quit")
        shown("Quit")
        xdotool("mousemove", x + 3 * width // 4, y + height - 30, "click", 1)
        self.assertEqual(self.agent.ended()[0], 0)
        self.assertEqual(len(self.files()), 1)
        self.assertTrue(plays(self.files()[0]))

    def test_a_signal_in_mid_recording_finishes_the_file(self):
        pick_area((300, 200), (700, 500))
        start_recording()
        self.assertEqual(self.agent.end()[0], 0)
        self.assertEqual(len(self.files()), 1)
        self.assertTrue(plays(self.files()[0]))

    def test_careless_hands_do_no_harm(self):
        # A selection too small to be meant.
        press("area")
        shown("selection-overlay")
        drag((300, 200), (316, 300))
        gone("selection-overlay")
        self.assertIsNone(window("selection-preview"))
        # One that is taken back at once.
        pick_area((300, 200), (700, 500))
        has_keyboard("KELDRA")
        xdotool("key", "Escape")
        gone("selection-preview")
        press("record")
        shown("Nothing selected")
        for name in CONTROL:
            if name in ("quit", "record"):
                continue
            press(name, times=2)
            xdotool("key", "Escape", "key", "Escape")
            wait(0.5)
            escape_selection()
            self.assertIsNone(self.agent.process.poll(), name)
        shown("KELDRA")
        self.assertEqual(self.files(), [])


class TwoMonitorsTest(TestCase):
    MONITORS = (("left", "960/250x1080/280+0+0", "screen"), ("right", "960/250x1080/280+960+0", "none"))

    def setUp(self):
        super().setUp()
        for monitor in self.MONITORS:
            subprocess.run(["xrandr", "--setmonitor", *monitor], check=True)
            self.addCleanup(subprocess.run, ["xrandr", "--delmonitor", monitor[0]], stderr=subprocess.DEVNULL)

    def test_a_display_is_picked_and_another_unplugged(self):
        with Home() as home, Agent(home) as agent:
            agent.is_found()
            press("display")
            shown("selection-overlay")
            xdotool("mousemove", 1400, 300, "mousemove", 1410, 300, "click", 1)
            gone("selection-overlay")
            start_recording()
            stop_recording()
            path = next(home.recordings.glob("*.mov"))
            _, stream = probe(path)
            self.assertEqual((stream["width"], stream["height"]), (960, 1080))

            x, y, width, _ = shown("KELDRA")
            drag((x + 300, y + 3), (1500, 600))
            until(lambda: window("KELDRA")[0] > 960, "control panel on the other monitor")
            subprocess.run(["xrandr", "--delmonitor", "right"], check=True)
            until(lambda: (place := window("KELDRA")) and place[0] + width <= 960, "control panel on the monitor that is left")
            self.assertEqual(agent.end()[0], 0)
