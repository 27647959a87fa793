"""What `keldra record` writes, judged by the file."""
import json
import signal
import subprocess

from harness import (Recording, Scene, TestCase, boxes, content_in_frame, number_in, numbers_of, pictures, probe, record, run,
                     stamps, until)


class DisplayTest(TestCase):
    def test_a_display_is_recorded_as_it_changes(self):
        # Slow enough for a busy machine: how fast it may be is measured in bench/.
        with Scene("--rate", 8) as scene:
            path = record(self.folder, "--display", 1, seconds=4)
        self.assertEqual(path.parent, self.folder)
        self.assertRegex(path.name, r"\AKELDRA-\d{4}-\d\d-\d\d-\d\d-\d\d-\d\d\.mov\Z")
        self.assertEqual([file.name for file in self.folder.iterdir()], [path.name], "nothing else is left behind")

        container, stream = probe(path)
        self.assertEqual((stream["width"], stream["height"], stream["codec_name"]), (1920, 1080, "h264"))
        self.assertTaggedBT709(stream)
        self.assertNotIn("moof", boxes(path), "a finished take is an ordinary movie")
        self.assertAlmostEqual(float(container["duration"]), 4, delta=0.25)

        times = stamps(path)
        numbers = numbers_of(path)
        self.assertEqual(times[0], 0)
        self.assertRising(times)
        self.assertNotIn(None, numbers, "no picture is torn")
        self.assertEqual(numbers, sorted(numbers))
        missing = set(n for n in scene.standing(0.1) if numbers[0] <= n <= numbers[-1]) - set(numbers)
        self.assertFalse(missing, "every picture that stood is there")

        # The file's time is the host's: each picture stands where the scene showed it.
        # The first picture stood already when the recording began, so the second one sets the clock.
        begin = scene.when(numbers[1]) - times[1]
        for number, moment in list(zip(numbers, times))[2:]:
            self.assertAlmostEqual(scene.when(number) - begin, moment, delta=0.1)
        self.assertColours(pictures(path, picture_filter="select=eq(n\\,10)")[0])

    def test_a_still_display_lasts_until_the_stop(self):
        with Scene("--still"):
            path = record(self.folder, "--display", 1, seconds=3)
        container, stream = probe(path)
        self.assertAlmostEqual(float(container["duration"]), 3, delta=0.2)
        self.assertLessEqual(len(stamps(path)), 5, "a screen that stands still gives no pictures")

    def test_the_quality_sets_the_rate(self):
        with Scene("--rate", 60):
            path = record(self.folder, "--display", 1, seconds=2, options=["--quality", "low"])
        times = stamps(path)
        self.assertLessEqual(len(times), 2.3 * 24 + 2)

    def test_ctrl_c_and_sigterm_finish_the_file(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            with Scene("--rate", 10):
                recording = Recording(self.folder, "--display", 1)
                path = recording.file()
                until(lambda: path.stat().st_size > 100_000, "growth of the file")
                self.assertEqual(recording.stop(number), path)
            self.assertNotIn("moof", boxes(path))
            self.assertGreater(len(stamps(path)), 2)
            path.unlink()


class AreaTest(TestCase):
    def test_an_area_shows_its_pixels(self):
        with Scene("--geometry", "800x480+203+101", "--rate", 10):
            path = record(self.folder, "--area", "153,81,700,301", seconds=2)
        _, stream = probe(path)
        self.assertEqual((stream["width"], stream["height"]), (700, 300), "sizes are even")
        picture = pictures(path, picture_filter="select=eq(n\\,5)")[0]
        self.assertColours(picture, origin=(50, 20))
        self.assertIsNotNone(number_in(picture, "number", origin=(50, 20)))

    def test_an_area_beyond_the_screen_is_black_there(self):
        with Scene("--rate", 10):
            path = record(self.folder, "--area", "-100,-60,800,400", seconds=1)
        picture = pictures(path)[-1]
        self.assertLessEqual(picture[:56].max(), 3)
        self.assertLessEqual(picture[:, :96].max(), 3)
        self.assertColours(picture, origin=(100, 60))


class WindowTest(TestCase):
    def test_a_covered_and_moved_window_is_whole(self):
        with Scene("--managed", "--geometry", "640x400+300+200", "--rate", 10, "--title", "Below") as scene:
            with Scene("--managed", "--geometry", "600x340+320+260", "--still", "--title", "Above",
                       "--colors", "ff00ff,ff00ff,ff00ff,ff00ff,ff00ff,ff00ff,ff00ff,ff00ff"):
                origin = content_in_frame(scene.window)
                recording = Recording(self.folder, "--window", scene.window)
                path = recording.file()
                until(lambda: path.stat().st_size > 50_000, "growth of the file")
                subprocess.run(["xdotool", "windowmove", str(scene.window), "-200", "700"], check=True)
                moved = scene.shown[-1][0]
                until(lambda: scene.shown[-1][0] > moved + 10, "a second after the move")
                recording.stop()
        numbers = numbers_of(path, origin)
        self.assertNotIn(None, numbers)
        self.assertGreater(numbers[-1], moved + 5, "the window is recorded on after it was moved half off the screen")
        for index in (3, len(numbers) - 1):
            picture = pictures(path, picture_filter=f"select=eq(n\\,{index})")[0]
            self.assertColours(picture, origin)


class SourcesTest(TestCase):
    def test_sources_name_what_record_takes(self):
        with Scene("--managed", "--geometry", "640x400+300+200", "--title", "A \"title\" é") as scene:
            status, out, err = run("sources", "--json")
            self.assertEqual((status, err), (0, ""))
            said = json.loads(out)
            self.assertEqual([(d["id"], d["width"], d["height"]) for d in said["displays"]], [(1, 1920, 1080)])
            window = next(w for w in said["windows"] if w["id"] == scene.window)
            self.assertEqual((window["title"], window["owner"]), ("A \"title\" é", "KeldraScene"))
            self.assertGreaterEqual(window["width"], 640)
            self.assertEqual((said["cameras"], said["microphones"]), ([], []))
            self.assertIn("A \"title\" é", run("sources")[1])
