"""Wrong input: one line that says what to do, the right exit status, nothing half written."""
import json
import os
import pathlib
import subprocess

from harness import KELDRA, Scene, TestCase, record, run, until


class BadSourceTest(TestCase):
    def check(self, arguments, status, *words, environment=None):
        with self.subTest(arguments=arguments):
            said = run(*arguments, environment=environment)
            self.assertEqual((said[0], said[1]), (status, ""), said[2])
            self.assertOneLine(said[2], *words)
            self.assertEqual(list(self.folder.iterdir()), [], "nothing is written")

    def test_sources_that_are_not_there(self):
        to = ["--seconds", 1, "--output-dir", self.folder]
        self.check(["record", "--display", 9, *to], 1, "there is no display 9")
        self.check(["record", "--window", 12345, *to], 1, "there is no window 12345")
        self.check(["record", "--area", "9000,0,10,10", *to], 1, "outside every display")
        self.check(["record", "--area", "0,0,0,10", *to], 2, "is empty")
        self.check(["record", *to], 2, "needs one of")
        self.check(["record", "--display", 1, "--seconds", "x"], 2, "--seconds needs a number")
        self.check(["record", "--display", 1, *to], 1, "DISPLAY", environment={"DISPLAY": ""})
        self.check(["record", "--display", 1, *to], 1, "Wayland", environment={"XDG_SESSION_TYPE": "wayland"})
        self.check(["sources"], 1, "DISPLAY", environment={"DISPLAY": ":987"})
        self.check(["telemetry"], 2, "telemetry needs --show")
        self.check(["telemetry", "--show", "all"], 2, "telemetry takes no argument \"all\"")
        self.check(["dance"], 2, "there is no command \"dance\", nor such a file", "--help")

    def test_folders_that_take_no_recording(self):
        self.check(["record", "--display", 1, "--output-dir", self.folder / "none"], 1,
                   "The output folder is unavailable or not writable.")
        self.check(["record", "--display", 1, "--output-dir", "/proc"], 1)

    def test_a_window_that_closes_ends_the_recording(self):
        from harness import Recording
        with Scene("--managed", "--geometry", "640x400+100+100") as scene:
            recording = Recording(self.folder, "--window", scene.window)
            recording.file()
        out, err = recording.process.communicate(timeout=60)
        self.assertEqual((recording.process.returncode, out), (1, ""))
        self.assertIn("The recorded window was closed.", err)

    def test_a_display_that_is_disconnected_ends_the_recording(self):
        from harness import Recording
        monitors = (("L", "960/250x1080/280+0+0", "screen"), ("R", "960/250x1080/280+960+0", "none"))
        for name, geometry, output in monitors:
            subprocess.run(["xrandr", "--setmonitor", name, geometry, output], check=True)
        try:
            with Scene("--rate", 10):
                recording = Recording(self.folder, "--display", 2, options=["--highlight"])
                path = recording.file()
                until(lambda: path.stat().st_size > 20_000, "growth of the file")
                subprocess.run(["xrandr", "--delmonitor", "R"], check=True)
                out, err = recording.process.communicate(timeout=60)
            self.assertEqual((recording.process.returncode, out), (1, ""))
            self.assertIn("The recorded display was disconnected.", err)
        finally:
            for name, _, _ in monitors:
                subprocess.run(["xrandr", "--delmonitor", name], capture_output=True)

    def test_a_folder_that_vanishes_is_told(self):
        from harness import Recording
        place = self.folder / "place"
        place.mkdir()
        with Scene("--rate", 10):
            recording = Recording(place, "--display", 1)
            recording.file().unlink()
            place.rmdir()
            out, err = recording.process.communicate(timeout=60)
        self.assertEqual((recording.process.returncode, out), (1, ""))
        self.assertIn("the file was removed or moved, or its folder, while it was recorded", err)


class BadMovieTest(TestCase):
    def test_inputs_that_are_no_movies(self):
        good = self.folder / "good.mov"
        with Scene("--rate", 10):
            record(self.folder, "--display", 1, seconds=1).rename(good)
        bad = self.folder / "bad"
        bad.mkdir()
        (bad / "empty.mov").touch()
        (bad / "text.mov").write_text("not a movie")
        (bad / "broken.json").write_text('{"id": 1}')
        (bad / "style.json").write_text('{"videoFit": "stretch"}')
        (bad / "cut.mov").write_bytes(good.read_bytes()[:3000])
        project = json.loads(run("project", good)[1])
        (bad / "nothing.json").write_text(json.dumps(project | {"segments": []}))
        output = self.folder / "out.mp4"
        output.write_text("old")
        for name in ("missing.mov", "empty.mov", "text.mov", "broken.json", "cut.mov", "."):
            for command in (["export", bad / name, "--output", output, "--quiet"],
                            ["frame", bad / name, "--at", 0, "--output", self.folder / "frame.png"],
                            ["project", bad / name]):
                with self.subTest(command=command[0], name=name):
                    status, out, err = run(*command)
                    self.assertEqual((status, out), (1, ""), err)
                    self.assertOneLine(err)
        self.assertEqual(output.read_text(), "old", "an export that never began leaves the old file")
        self.assertFalse((self.folder / "frame.png").exists())

        for arguments, status, words in (
                (["frame", good, "--at", 60, "--output", self.folder / "f.png"], 1, "past the end"),
                (["frame", good, "--at", -1, "--output", self.folder / "f.png"], 2, "--at"),
                (["frame", good, "--output", self.folder / "f.png"], 2, "--at"),
                (["frame", good, "--at", 0, "--output", self.folder / "none" / "f.png"], 1, "f.png"),
                (["frame", good, "--at", 0, "--output", good], 1, "input"),
                (["frame", bad / "nothing.json", "--at", 0, "--output", self.folder / "f.png"], 1, "the timeline is empty"),
                (["export", good, "--output", self.folder / "none" / "o.mp4", "--quiet"], 1, "o.mp4"),
                (["export", good, "--output", good, "--quiet"], 1, "input"),
                (["export", good, "--quiet"], 2, "--output"),
                (["export", good, "--output", output, "--canvas", bad / "style.json", "--quiet"], 1, "videoFit")):
            with self.subTest(arguments=arguments):
                said = run(*arguments)
                self.assertEqual((said[0], said[1]), (status, ""), said[2])
                self.assertOneLine(said[2], words)
        self.assertEqual(sorted(file.name for file in self.folder.iterdir()), ["bad", "good.mov", "out.mp4"])
