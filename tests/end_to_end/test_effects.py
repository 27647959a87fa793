"""Clicks and the pointer in a recording: their sound, and what is drawn around them, judged by the file."""
import subprocess

import numpy

from harness import (DisplayMode, Recording, Scene, TestCase, content_in_frame, numbers_of, onsets, pictures, run, sound,
                     stamps, until, wait, xdotool)

GREY = 0x60
# A place of the scene that is flat grey, for 50 pixels around.
SPOT = (700, 200)
# A picture is stamped when it was taken, and drawn on a little later, on a busy machine by as many seconds.
LATE = 0.2


def click(scene, button=1):
    count = len(scene.clicks)
    xdotool("click", button)
    until(lambda: len(scene.clicks) > count, "click in the scene")


def growing(recording, size=30_000):
    path = recording.file()
    until(lambda: path.stat().st_size > size, "growth of the file")
    return path


def patch(place, origin=(0, 0), reach=44):
    """The area around a place, and where the place is in it; origin is where the recording begins."""
    return (place[0] - origin[0] - reach, place[1] - origin[1] - reach, 2 * reach, 2 * reach)


def ring_radius(picture, reach=44):
    """How far to the left of the middle the ring of a ripple lies: the middle of its brightest stretch; None for a flat picture."""
    ray = numpy.abs(picture[reach - 1:reach + 2, :reach].astype(int) - GREY).max(axis=(0, 2))[::-1]
    if ray[8:].max() < 9:
        return None
    strong = numpy.flatnonzero(ray[8:] > ray[8:].max() * 0.6) + 8
    return (strong[-1] + strong[0]) / 2 + 0.5


class ClickSoundTest(TestCase):
    def test_each_click_is_heard_when_it_was_made(self):
        for style in ("soft", "classic"):
            with self.subTest(style=style), Scene("--rate", 20) as scene:
                xdotool("mousemove", *SPOT)
                recording = Recording(self.folder, "--display", 1, options=["--click-sound", style])
                growing(recording)
                for index in range(6):
                    # A wheel is no button.
                    click(scene, button=4 if index == 3 else 1 + index % 3)
                    wait(0.23 + 0.013 * index)
                clicks = [moment for index, moment in enumerate(scene.clicks) if index != 3]
                path = recording.stop()
                heard = [recording.begin() + second for second in onsets(sound(path))]
                self.assertEqual(len(heard), len(clicks))
                for made, found in zip(clicks, heard):
                    self.assertGreater(found - made, -0.001)
                    self.assertLess(found - made, 0.060)
                path.unlink()

    def test_the_track_lasts_as_long_as_the_recording(self):
        with Scene("--still"):
            recording = Recording(self.folder, "--display", 1, options=["--click-sound", "soft"])
            growing(recording, 1000)
            wait(2)
            path = recording.stop()
        samples = sound(path)
        self.assertFalse(samples.any())
        said = subprocess.run(["ffprobe", "-v", "error", "-show_entries", "stream=codec_name,duration", "-of", "csv=p=0",
                               str(path)], check=True, stdout=subprocess.PIPE, text=True).stdout.split()
        lengths = {line.split(",")[0]: float(line.split(",")[1]) for line in said}
        self.assertAlmostEqual(lengths["pcm_f32le"], lengths["h264"], delta=0.2)


class ClickDrawingTest(TestCase):
    def check_ripples(self, source, scene, place, origin, moved_to=None):
        """The scene's spot is at `place` of the desktop, where the recording begins at `origin`."""
        recording = Recording(self.folder, *source, options=["--clicks"])
        growing(recording)
        if moved_to:
            shown = scene.shown[-1][0]
            xdotool("windowmove", scene.window, *moved_to)
            until(lambda: scene.shown[-1][0] > shown + 10, "pictures after the move")
        xdotool("mousemove", "--window", scene.window, *SPOT)
        click(scene)
        made = scene.clicks[-1]
        wait(1)
        path = recording.stop()
        begin = recording.begin()
        seen = 0
        for moment, picture in zip(stamps(path), pictures(path, patch(place, origin))):
            age = begin + moment - made
            radius = ring_radius(picture)
            if age < -LATE or age > 0.56:
                self.assertIsNone(radius, f"nothing is drawn {age} s after the click")
            # Late in its life a ripple is too faint to measure.
            elif 0.05 < age < 0.35 - LATE:
                self.assertIsNotNone(radius, f"the ripple is there {age} s after the click")
                self.assertGreater(radius, 10 + 24 * age / 0.52 - 3.5, f"{age} s after the click")
                self.assertLess(radius, 10 + 24 * (age + LATE) / 0.52 + 3.5, f"{age} s after the click")
                seen += 1
        self.assertGreater(seen, 1)
        path.unlink()

    def test_ripples_grow_where_and_when_a_click_was_made(self):
        with Scene("--rate", 20) as scene:
            self.check_ripples(["--display", 1], scene, SPOT, (0, 0))
            self.check_ripples(["--area", "601,101,301,201"], scene, SPOT, (601, 101))
        with Scene("--managed", "--geometry", "900x600+200+100", "--rate", 20) as scene:
            left, top = content_in_frame(scene.window)
            self.check_ripples(["--window", scene.window], scene, (left + SPOT[0], top + SPOT[1]), (0, 0), (640, 330))

    def test_a_click_on_a_still_screen_is_drawn_too(self):
        with Scene("--still") as scene:
            xdotool("mousemove", *SPOT)
            recording = Recording(self.folder, "--display", 1, options=["--clicks"])
            growing(recording, 1000)
            click(scene)
            wait(1)
            path = recording.stop()
        radii = [radius for radius in map(ring_radius, pictures(path, patch(SPOT))) if radius]
        self.assertGreater(len(radii), 12)
        self.assertLess(radii[0], 14)
        self.assertGreater(radii[-1], 24)

    def test_a_held_button_has_a_dot(self):
        with Scene("--rate", 20) as scene:
            xdotool("mousemove", *SPOT)
            recording = Recording(self.folder, "--display", 1, options=["--clicks"])
            growing(recording)
            xdotool("mousedown", 1)
            until(lambda: scene.clicks, "click in the scene")
            wait(1)
            xdotool("mouseup", 1)
            wait(0.5)
            path = recording.stop()
        held = scene.clicks[0] - recording.begin()
        # To the upper left of the pointer's own picture.
        dots = pictures(path, patch(SPOT))[:, 44 - 3, 44 - 3].astype(int).max(axis=1)
        for moment, dot in zip(stamps(path), dots):
            if 0.6 < moment - held < 0.95:
                self.assertAlmostEqual(dot, 0.14 * GREY + 0.86 * 0.48 * 255, delta=6)
            elif moment < held - LATE or moment - held > 1.2:
                self.assertAlmostEqual(dot, GREY, delta=6)


def is_lit(picture, x, y):
    """The outer ring of the highlight, seen to the upper left of the pointer's own picture."""
    red, green, blue = picture[int(y) - 14, int(x) - 14].astype(int)
    return red - blue > 30 and green - blue > 20


class HighlightTest(TestCase):
    def test_a_highlight_follows_the_pointer(self):
        with Scene("--rate", 20):
            xdotool("mousemove", *SPOT)
            recording = Recording(self.folder, "--display", 1, options=["--highlight"])
            growing(recording)
            xdotool("mousemove", SPOT[0] + 150, SPOT[1] + 20)
            wait(1)
            path = recording.stop()
        frames = pictures(path, (600, 100, 400, 200))
        places = [(SPOT[0] - 600, SPOT[1] - 100), (SPOT[0] - 450, SPOT[1] - 80)]
        self.assertTrue(is_lit(frames[0], *places[0]))
        self.assertFalse(is_lit(frames[0], *places[1]))
        self.assertTrue(is_lit(frames[-1], *places[1]))
        self.assertFalse(is_lit(frames[-1], *places[0]))

    def test_a_highlight_lies_in_an_area_and_not_beyond(self):
        for left, is_inside in ((601, True), (720, False)):
            with Scene("--rate", 20):
                xdotool("mousemove", *SPOT)
                recording = Recording(self.folder, "--area", f"{left},101,300,200", options=["--highlight"])
                growing(recording)
                path = recording.stop()
            frames = pictures(path)
            if is_inside:
                self.assertTrue(is_lit(frames[-1], SPOT[0] - left, SPOT[1] - 101))
            else:
                self.assertLess(numpy.ptp(frames[-1][80:120, :40].astype(int)), 10, "the pointer is outside")
            path.unlink()

    def test_a_highlight_stays_at_the_pointer_when_the_window_moves(self):
        with Scene("--managed", "--geometry", "900x600+200+100", "--rate", 20) as scene:
            left, top = content_in_frame(scene.window)
            xdotool("mousemove", "--window", scene.window, *SPOT)
            recording = Recording(self.folder, "--window", scene.window, options=["--highlight"])
            growing(recording)
            xdotool("windowmove", "--relative", scene.window, 90, 60)
            wait(1)
            path = recording.stop()
        frames = pictures(path)
        place = (SPOT[0] + left, SPOT[1] + top)
        self.assertTrue(is_lit(frames[0], *place))
        self.assertFalse(is_lit(frames[-1], *place))
        # Moving a client by so much may move it by its frame too.
        moved = [(place[0] - 90 - dx, place[1] - 60 - dy) for dx in (0, left) for dy in (0, top)]
        self.assertTrue(any(is_lit(frames[-1], x, y) for x, y in moved))

    def test_nothing_is_written_for_a_highlight_on_a_still_screen(self):
        with Scene("--still"):
            xdotool("mousemove", *SPOT)
            recording = Recording(self.folder, "--display", 1, options=["--highlight"])
            growing(recording, 1000)
            wait(2)
            path = recording.stop()
        self.assertLessEqual(len(stamps(path)), 5)


class ChangedDisplayTest(TestCase):
    """A display that gets another size while it is recorded, with a pointer that stands where the scene is grey."""

    def record(self, source, change, options=("--highlight",), environment=None):
        """The first picture, and one from well after the change."""
        with Scene("--geometry", "800x480+0+0", "--rate", 10) as scene:
            xdotool("mousemove", *SPOT)
            recording = Recording(self.folder, *source, options=options, environment=environment)
            growing(recording)
            with change:
                changed = scene.shown[-1][0]
                until(lambda: scene.shown[-1][0] > changed + 15, "pictures after the change")
                path = recording.stop()
        frames = pictures(path)
        path.unlink()
        return frames[0], frames[-1]

    def check(self, picture, left, top, scale=1.0):
        """Where the scene's corner is, and its scale."""
        self.assertColours(picture, (left, top), scale)
        self.assertTrue(is_lit(picture, left + SPOT[0] * scale, top + SPOT[1] * scale))

    def test_a_display_is_fitted_into_its_first_size(self):
        first, last = self.record(["--display", 1], DisplayMode(960, 720))
        self.check(first, 0, 0)
        self.assertEqual(last.shape[:2], (1080, 1920))
        self.check(last, 240, 0, 1.5)
        self.assertLessEqual(max(last[:, :236].max(), last[:, 1684:].max()), 3)
        with DisplayMode(960, 720):
            first, last = self.record(["--display", 1], DisplayMode(1920, 1080))
        self.check(first, 0, 0)
        self.assertEqual(last.shape[:2], (720, 960))
        self.check(last, 0, 90, 0.5)

    def test_an_area_stays_where_it_is(self):
        first, last = self.record(["--area", "20,10,1200,500"], DisplayMode(960, 720))
        self.check(first, -20, -10)
        self.check(last, -20, -10)
        self.assertLessEqual(last[:, 944:].max(), 3, "black beyond the display")
        with DisplayMode(960, 720):
            first, last = self.record(["--area", "20,10,900,500"], DisplayMode(1920, 1080))
        self.check(first, -20, -10)
        self.check(last, -20, -10)

    def test_plain_capture_keeps_the_scale(self):
        first, last = self.record(["--display", 1], DisplayMode(960, 720), (), {"KELDRA_CAPTURE": "display"})
        self.assertEqual(last.shape, first.shape)
        self.assertColours(last)
        self.assertLessEqual(max(last[724:].max(), last[:, 964:].max()), 3)


class PlainCaptureTest(TestCase):
    """Where the desktop cannot stream: its display as it is."""

    def setUp(self):
        super().setUp()
        self.environment = {"KELDRA_CAPTURE": "display"}

    def record(self, *source, options=()):
        return Recording(self.folder, *source, options=options, environment=self.environment)

    def test_displays_areas_and_windows_show_their_pixels(self):
        with Scene("--managed", "--geometry", "640x400+300+200", "--rate", 10) as scene:
            origin = content_in_frame(scene.window)
            for source in (["--display", 1], ["--window", scene.window]):
                recording = self.record(*source)
                growing(recording)
                wait(1)
                path = recording.stop()
                self.assertGreater(len(stamps(path)), 4)
                if source[0] == "--window":
                    numbers = numbers_of(path, origin)
                    # Nothing keeps the server from painting while it is read.
                    seen = [number for number in numbers if number is not None]
                    self.assertGreater(len(seen), len(numbers) * 0.8)
                    self.assertEqual(seen, sorted(seen))
                path.unlink()
        xdotool("mousemove", 5, 1000)
        with Scene("--geometry", "800x480+203+101", "--rate", 10):
            recording = self.record("--area", "153,81,700,301")
            growing(recording)
            path = recording.stop()
        self.assertColours(pictures(path)[-1], origin=(50, 20))

    def test_a_still_display_costs_one_picture(self):
        with Scene("--still"):
            recording = self.record("--display", 1)
            growing(recording, 1000)
            wait(1)
            path = recording.stop()
        self.assertLessEqual(len(stamps(path)), 5)

    def test_clicks_are_mixed_in_afterwards(self):
        with Scene("--rate", 10) as scene:
            recording = self.record("--display", 1, options=["--click-sound", "soft"])
            growing(recording)
            for _ in range(3):
                click(scene)
                wait(0.3)
            path = recording.stop()
        heard = [recording.begin() + second for second in onsets(sound(path))]
        self.assertEqual(len(heard), 3)
        # They are counted from the moment the capture had begun, which is close to the first picture's.
        for made, found in zip(scene.clicks, heard):
            self.assertAlmostEqual(found, made, delta=0.1)
        self.assertEqual([file.name for file in self.folder.iterdir()], [path.name])

    def test_effects_are_refused(self):
        for option in ("--clicks", "--highlight"):
            status, out, err = run("record", "--display", 1, option, "--output-dir", self.folder, environment=self.environment)
            self.assertEqual((status, out), (1, ""))
            self.assertOneLine(err, option)
        self.assertEqual(list(self.folder.iterdir()), [])
