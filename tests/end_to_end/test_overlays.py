"""Selection, preview, countdown and effects on the real desktop, moved and clicked with xdotool.

With a KELDRA_TEST_COMPOSITOR overlays are translucent, and what they let through differs.
"""
import json
import os
import re
import select
import subprocess
import unittest

import numpy
from harness import BUILD, Scene, TestCase, content_in_frame, until, xdotool

OVERLAYS = str(BUILD / "keldra_overlays")
COMPOSITED = os.environ.get("KELDRA_TEST_COMPOSITOR", "none") != "none"
FACTORS = (1, 1.25, 1.5, 2)
DIMMED = 0.48


class Overlay:
    """A running keldra_overlays; `said` reads what it tells, in order."""

    def __init__(self, *words, factor=1):
        self._process = subprocess.Popen([OVERLAYS, *map(str, words)], stdout=subprocess.PIPE, text=True,
                                         env={**os.environ, "QT_SCALE_FACTOR": str(factor)})
        self.windows = self.said()["up"]

    def said(self):
        until(lambda: self.has_said(0.1), "word from keldra_overlays")
        line = self._process.stdout.readline()
        if not line:
            raise AssertionError(f"keldra_overlays ended with {self._process.wait()}")
        return json.loads(line)

    def has_said(self, seconds):
        return bool(select.select([self._process.stdout], [], [], seconds)[0])

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.terminate()
        self._process.wait()
        self._process.stdout.close()


class Monitors:
    """Several monitors on the one screen of the server: (name, x, y, width, height); the first is primary."""

    def __init__(self, *monitors):
        self.monitors = monitors

    def __enter__(self):
        for index, (name, x, y, width, height) in enumerate(self.monitors):
            subprocess.run(["xrandr", "--setmonitor", ("" if index else "*") + name,
                            f"{width}/300x{height}/200+{x}+{y}", "none" if index else "screen"], check=True)

    def __exit__(self, *_):
        for name, *_ in reversed(self.monitors):
            subprocess.run(["xrandr", "--delmonitor", name], check=True)


def screen(x=0, y=0, width=1920, height=1080):
    """What the screen shows, without the pointer."""
    raw = subprocess.run(["ffmpeg", "-nostdin", "-v", "fatal", "-f", "x11grab", "-draw_mouse", "0", "-video_size",
                          f"{width}x{height}", "-i", f"{os.environ['DISPLAY']}+{x},{y}", "-frames:v", "1", "-f", "rawvideo",
                          "-pix_fmt", "rgb24", "-"], check=True, stdout=subprocess.PIPE).stdout
    return numpy.frombuffer(raw, numpy.uint8).reshape(height, width, 3).astype(int)


def drag(start, end, *between):
    xdotool("mousemove", *start, "mousedown", 1)
    for place in (*between, end):
        xdotool("mousemove", *place)
    xdotool("mouseup", 1)


def pixels(rect, factor, primary):
    """Desktop points as (left, top, width, height) in pixels of the root window; exact, or it fails."""
    x, y, width, height = (rect[key] * factor for key in ("x", "y", "width", "height"))
    bottom = primary[1] + primary[3]
    values = (primary[0] + x, bottom - y - height, width, height)
    if any(abs(value - round(value)) > 1e-6 for value in values):
        raise AssertionError(f"between pixels: {values}")
    return tuple(round(value) for value in values)


def mode_of(picture):
    """The commonest colour of a flat picture."""
    colours, counts = numpy.unique(picture.reshape(-1, 3), axis=0, return_counts=True)
    return colours[counts.argmax()]


class OverlayTest(TestCase):
    whole = (0, 0, 1920, 1080)
    layouts = {"one": (), "beside": (("L", 0, 0, 960, 1080), ("R", 960, 0, 960, 1080)),
               "primary right": (("R", 960, 0, 960, 1080), ("L", 0, 0, 960, 1080)),
               "uneven": (("L", 0, 0, 1101, 777), ("R", 1101, 200, 803, 801))}

    def setUp(self):
        super().setUp()
        subprocess.run(["xsetroot", "-solid", "#c0c8d0"], check=True)
        xdotool("mousemove", 20, 1000)

    def on_each_desktop(self, check, factors=None):
        """With every layout at every factor, or at the one of each that is told."""
        for index, (name, monitors) in enumerate(self.layouts.items()):
            with Monitors(*monitors):
                for factor in [factors[index]] if factors else FACTORS:
                    with self.subTest(layout=name, factor=factor):
                        check(monitors or (("screen", *self.whole),), factor)

    @staticmethod
    def frame_of(window):
        said = subprocess.run(["xwininfo", "-id", str(int(window))], check=True, stdout=subprocess.PIPE, text=True).stdout
        return tuple(int(re.search(name + r":\s+(-?\d+)", said).group(1))
                     for name in ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))

    @staticmethod
    def desktop(monitors):
        left, top = min(m[1] for m in monitors), min(m[2] for m in monitors)
        return (left, top, max(m[1] + m[3] for m in monitors) - left, max(m[2] + m[4] for m in monitors) - top)


class RegionTest(OverlayTest):
    def test_a_region_is_what_was_dragged_over_to_the_pixel(self):
        def check(monitors, factor):
            _, x, y, *_ = monitors[-1]
            start, end = (x + 101, y + 203), (x + 501, y + 507)
            with Overlay("region", factor=factor) as overlay:
                self.assertEqual(self.frame_of(overlay.windows["selection-overlay"]), self.desktop(monitors))
                drag(start, end, (x + 300, y + 400))
                said = overlay.said()
            self.assertEqual(pixels(said["region"], factor, monitors[0][1:]), (*start, 400, 304))

        self.on_each_desktop(check)

    def test_what_is_clear_is_what_is_selected(self):
        def check(monitors, factor):
            _, x, y, *_ = monitors[-1]
            before = mode_of(screen(x + 40, y + 40, 400, 400))
            with Overlay("region", factor=factor) as overlay:
                xdotool("mousemove", x + 101, y + 103, "mousedown", 1, "mousemove", x + 221, y + 243)
                until(lambda: (screen(x + 160, y + 170, 1, 1)[0, 0] == before).all(), "a clear region")
                shown = screen(x + 40, y + 40, 260, 280)
                xdotool("mouseup", 1)
                overlay.said()
            # Border and handles lie over the edges; between them and around them the rest is flat.
            clear = (numpy.abs(shown - before).max(axis=2) == 0)
            rows, columns = numpy.flatnonzero(clear[:, 120]), numpy.flatnonzero(clear[133, :])
            reach = numpy.ceil(1.5 * factor)
            for first, edge in ((rows[0], 63), (columns[0], 61)):
                self.assertTrue(0 <= first - edge <= reach, (first, edge))
            for last, edge in ((rows[-1], 203), (columns[-1], 181)):
                self.assertTrue(0 < edge - last <= reach + 1, (last, edge))
            self.assertTrue((numpy.abs(shown[5, 5] - before * DIMMED - 0.52 * 0.03 * 255) <= 2).all(), shown[5, 5])

        self.on_each_desktop(check, factors=(1, 1.25, 2, 1.5))

    def test_escape_is_heard_wherever_the_keyboard_was(self):
        with Scene("--managed", "--geometry", "640x400+100+100", "--still", "--title", "Focused") as scene:
            xdotool("windowfocus", "--sync", scene.window)
            with Overlay("region") as overlay:
                xdotool("key", "space", "Escape")
                self.assertEqual(overlay.said(), {"cancelled": True})
            focus = subprocess.run(["xdotool", "getwindowfocus"], check=True, stdout=subprocess.PIPE, text=True).stdout
            self.assertEqual(int(focus), scene.window, "the keyboard is where it was")


    def test_escape_is_heard_while_a_panel_of_ours_has_the_keyboard(self):
        with Scene("--managed", "--geometry", "640x400+100+100", "--still") as scene:
            with Overlay("--focused-panel", "region") as overlay:
                xdotool("key", "Escape")
                self.assertEqual(overlay.said(), {"cancelled": True})
            with Overlay("--focused-panel", "region") as overlay:
                # It comes to the panel only now.
                xdotool("windowfocus", "--sync", scene.window, "windowfocus", "--sync", overlay.windows["panel"], "key", "Escape")
                self.assertEqual(overlay.said(), {"cancelled": True})

    def test_the_keyboard_is_taken_as_soon_as_another_program_lets_go_of_it(self):
        with Overlay("region") as first, Overlay("region") as second:
            xdotool("key", "Escape")
            self.assertEqual(first.said(), {"cancelled": True})
            # Nobody tells when the second one has it.
            until(lambda: xdotool("key", "Escape") or second.has_said(0.1), "answer to Escape")
            self.assertEqual(second.said(), {"cancelled": True})


    def test_another_layout_of_monitors_ends_it(self):
        for words in (("region",), ("display",)):
            with Overlay(*words) as overlay:
                with Monitors(*self.layouts["beside"]):
                    self.assertEqual(overlay.said(), {"cancelled": True})


class PickTest(OverlayTest):
    def test_a_window_with_its_frame(self):
        with Scene("--managed", "--geometry", "640x400+300+200", "--still", "--title", "Picked") as scene:
            for factor in FACTORS:
                with Overlay("window", factor=factor) as overlay:
                    xdotool("mousemove", 500, 400, "click", 1)
                    said = overlay.said()
                self.assertEqual((said["window"], said["title"]), (scene.window, "Picked"))
                left, top, width, height = pixels(said["rect"], factor, self.whole)
                inner = self.frame_of(scene.window)
                self.assertEqual((inner[0] - left, inner[1] - top), content_in_frame(scene.window))
                self.assertTrue(left + width >= inner[0] + inner[2] and top + height >= inner[1] + inner[3], (width, height))
            if left + width > 1500:
                return  # The window manager lets no place stay empty.
            with Overlay("window") as overlay:
                xdotool("mousemove", 1500, 900, "click", 1)
                self.assertEqual(overlay.said(), {"cancelled": True}, "a click beside all windows")

    def test_a_display_under_the_pointer(self):
        with Monitors(*self.layouts["beside"]):
            for factor in FACTORS:
                for x, name in ((959, "L"), (960, "R")):
                    with Overlay("display", factor=factor) as overlay:
                        xdotool("mousemove", x, 0, "click", 1)
                        self.assertEqual(overlay.said()["name"], name)


class PreviewTest(OverlayTest):
    # 400 x 300 with its lower left corner at (200, 300): in pixels at factor 1, x 200 to 600 and y 480 to 780.
    region = (200, 300, 400, 300)

    def test_drags_move_and_resize_to_the_pixel(self):
        for factor in FACTORS:
            with Overlay("preview-region", 100, 100, 200, 152, factor=factor) as overlay:
                # Points count from the lower left corner.
                def place(x, y):
                    return (round(x * factor), 1080 - round(y * factor))
                hold = place(200, 175) if COMPOSITED else place(102, 175)
                drag(hold, (hold[0] + 61, hold[1] - 37))
                self.assertEqual(pixels(overlay.said()["region"], factor, self.whole),
                                 (round(100 * factor) + 61, 1080 - round(252 * factor) - 37, round(200 * factor), round(152 * factor)))
                corner = (round(300 * factor) + 61, 1080 - round(252 * factor) - 37)
                drag(corner, (corner[0] + 40, corner[1] - 23))
                self.assertEqual(pixels(overlay.said()["region"], factor, self.whole),
                                 (round(100 * factor) + 61, corner[1] - 23, round(200 * factor) + 40, round(152 * factor) + 23))

    def test_it_lies_above_windows_and_below_panels(self):
        with Scene("--managed", "--geometry", "700x500+150+400", "--still", "--title", "Below") as scene:
            with Overlay("--panel", "preview-region", *self.region) as overlay:
                xdotool("windowraise", scene.window)
                xdotool("windowfocus", scene.window)
                wanted = [scene.window, *(int(overlay.windows[name]) for name in ("selection-preview", "panel"))]
                for _ in range(2):
                    until(lambda: [window for window in self.stacking() if window in wanted] == wanted, "preview between them")
                    xdotool("windowraise", scene.window)
                states = subprocess.run(["xprop", "-id", str(int(overlay.windows["selection-preview"])), "_NET_WM_STATE",
                                         "_NET_WM_DESKTOP"], check=True, stdout=subprocess.PIPE, text=True).stdout
                for state in ("ABOVE", "SKIP_TASKBAR", "SKIP_PAGER", "4294967295"):
                    self.assertIn(state, states)

    @staticmethod
    def stacking():
        said = subprocess.run(["xprop", "-root", "_NET_CLIENT_LIST_STACKING"], check=True, stdout=subprocess.PIPE, text=True).stdout
        return [int(word, 16) for word in re.findall(r"0x[0-9a-f]+", said)]

    def test_it_covers_the_whole_desktop(self):
        def check(monitors, factor):
            with Overlay("preview-display", 1, factor=factor) as overlay:
                x, y, width, height = self.desktop(monitors)
                # Never a monitor exactly: that is for full-screen programs.
                wanted = ((x, y, width, height), (x, y, width + 1, height + 1))
                until(lambda: self.frame_of(overlay.windows["selection-preview"]) in wanted, f"preview over {wanted[0]}")

        self.on_each_desktop(check, factors=(1.25, 1, 1.5, 2))

    def test_clicks_go_through_unless_a_region_can_be_changed(self):
        for words, heard in ((("preview-display", 1), True), (("preview-region", *self.region), not COMPOSITED)):
            with Scene("--managed", "--geometry", "700x500+150+400", "--still") as scene, Overlay(*words) as overlay:
                xdotool("mousemove", 400, 620, "click", 1)
                if heard:
                    until(lambda: scene.clicks, "click on the window below")
                else:
                    overlay.said()
                    self.assertEqual(scene.clicks, [])

    @unittest.skipIf(os.environ.get("KELDRA_TEST_WM") == "i3", "i3 gives whatever is new the keyboard; our panels take it back")
    def test_escape_is_heard_while_a_window_of_ours_has_the_keyboard(self):
        with Scene("--managed", "--geometry", "700x500+150+400", "--still") as scene:
            with Overlay("--focused-panel", "preview-display", 1) as overlay:
                xdotool("key", "a", "Escape")
                self.assertEqual(overlay.said(), {"cancelled": True})
            with Overlay("preview-display", 1) as overlay:
                xdotool("windowfocus", "--sync", scene.window, "key", "Escape")
                self.assertFalse(overlay.has_said(0.3), "it was for the other window")

    def test_what_is_outside_is_dimmed_where_that_can_be(self):
        inside, outside = (400, 620, 1, 1), (1500, 200, 1, 1)
        with Scene("--managed", "--geometry", "1920x1080+0+0", "--still"):
            before = [screen(*place) for place in (inside, outside)]
            with Overlay("preview-region", *self.region):
                if COMPOSITED:
                    until(lambda: screen(*outside).max() < 0.6 * before[1].max(), "dimmed desktop")
                else:
                    numpy.testing.assert_array_equal(screen(*outside), before[1])
                numpy.testing.assert_array_equal(screen(*inside), before[0])


class CountdownTest(OverlayTest):
    def test_it_sounds_and_lets_clicks_through(self):
        with Scene("--managed", "--geometry", "800x600+560+240", "--still") as scene:
            overlay = subprocess.Popen([OVERLAYS, "countdown", "2"], stdout=subprocess.PIPE, text=True)
            said = [json.loads(overlay.stdout.readline()) for _ in range(2)]
            xdotool("mousemove", 960, 540, "click", 1)
            until(lambda: scene.clicks, "click on the window below")
            said += [json.loads(line) for line in overlay.stdout]
            overlay.wait()
            overlay.stdout.close()
        self.assertEqual([word["sound"] for word in said if "sound" in word], ["Tink", "Hero"])
        self.assertEqual(said[-1], {"done": True})


class EffectsTest(OverlayTest):
    def test_the_highlight_follows_and_clicks_go_through(self):
        for factor in FACTORS:
            with Scene("--managed", "--geometry", "1920x1080+0+0", "--still") as scene, Overlay("effects", "highlight", factor=factor):
                before = None
                for place in ((700, 150), (1200, 200)):
                    xdotool("mousemove", *place)
                    # The highlight's edge, 24 points from the pointer.
                    edge = (place[0] + round(22.5 * factor), place[1])
                    until(lambda: self.is_yellow(screen(*edge, 1, 1)), f"highlight around {place}")
                    if before:
                        self.assertFalse(self.is_yellow(screen(*before, 1, 1)), "where the pointer was")
                    before = edge
                xdotool("click", 1)
                until(lambda: scene.clicks, "click on the window below")

    def test_it_goes_on_when_monitors_come_and_go(self):
        with Overlay("effects", "highlight", factor=1.5):
            for edge in (760, 480):
                with Monitors(*self.layouts["beside"]):
                    xdotool("mousemove", 1200, edge)
                    until(lambda: self.is_yellow(screen(1200 + 33, edge, 1, 1)), "highlight on two monitors")
                xdotool("mousemove", 500, edge)
                until(lambda: self.is_yellow(screen(500 + 33, edge, 1, 1)), "highlight on one monitor")

    @staticmethod
    def is_yellow(picture):
        red, green, blue = picture[0, 0]
        return min(red, green) - blue > 20


if __name__ == "__main__":
    unittest.main()
