"""From a recording to a styled MP4."""
import json
import math
import subprocess

import numpy

from harness import LAYOUT, KELDRA, Scene, TestCase, boxes, number_in, pictures, probe, record, run, stamps

# A fresh project's look: 5 % of the smaller side around a picture that fits.
SCALE, LEFT, TOP = 0.9, 96, 54


class ExportTest(TestCase):
    @classmethod
    def setUpClass(cls):
        import tempfile
        import pathlib
        cls.shared = tempfile.TemporaryDirectory()
        with Scene("--rate", 10):
            cls.recording = record(cls.shared.name, "--display", 1, seconds=2)

    @classmethod
    def tearDownClass(cls):
        cls.shared.cleanup()

    def test_an_export_is_styled_constant_in_rate_and_true_in_colour(self):
        output = self.folder / "out.mp4"
        status, out, err = run("export", self.recording, "--output", output)
        self.assertEqual((status, out), (0, ""), err)
        self.assertRegex(err, r"\A(progress \d\.\d\d\n)+\Z")
        self.assertTrue(err.endswith("progress 1.00\n"))

        container, stream = probe(output)
        self.assertEqual((stream["width"], stream["height"], stream["codec_name"]), (1920, 1080, "h264"))
        self.assertTaggedBT709(stream)
        kinds = boxes(output)
        self.assertLess(kinds.index("moov"), kinds.index("mdat"), "the index stands at the head")
        times = stamps(output)
        rate = 60  # the recording's own, though the scene moved at 10
        self.assertEqual(len(times), math.ceil(float(probe(self.recording)[0]["duration"]) * rate - 1e-6))
        for index, moment in enumerate(times):
            self.assertAlmostEqual(moment, index / rate, places=4)

        picture = pictures(output, picture_filter=f"select=eq(n\\,{len(times) // 2})")[0]
        self.assertColours(picture, origin=(LEFT, TOP), scale=SCALE)
        self.assertGreater(picture[540, 20].astype(int)[2], picture[540, 20].astype(int)[0], "the ocean lies around it")
        self.assertGreater(picture[1079, 960].astype(int).sum(), picture[0, 960].astype(int).sum(), "lighter at the bottom")

    def test_a_frame_is_the_exports_frame(self):
        frame, output = self.folder / "frame.png", self.folder / "out.mp4"
        self.assertEqual(run("frame", self.recording, "--at", 0.5, "--output", frame)[0], 0)
        self.assertEqual(run("export", self.recording, "--output", output, "--quiet"), (0, "", ""))
        raw = subprocess.run(["ffmpeg", "-v", "error", "-i", frame, "-f", "rawvideo", "-pix_fmt", "rgb24", "-"], check=True,
                             stdout=subprocess.PIPE).stdout
        alone = numpy.frombuffer(raw, numpy.uint8).reshape(1080, 1920, 3).astype(int)
        times = stamps(output)
        index = max(i for i, moment in enumerate(times) if moment <= 0.5 + 1e-6)
        exported = pictures(output, picture_filter=f"select=eq(n\\,{index})")[0].astype(int)
        self.assertLess(numpy.abs(alone - exported).mean(), 3)
        self.assertColours(alone, origin=(LEFT, TOP), scale=SCALE)

    def test_a_style_and_a_project_file_decide_the_look(self):
        style = self.folder / "style.json"
        style.write_text(json.dumps({"background": {"color": {"_0": {"red": 1, "green": 0, "blue": 0, "alpha": 1}}},
                                     "size": {"preset": {"_0": "square1x1"}}}))
        output = self.folder / "square.mp4"
        self.assertEqual(run("export", self.recording, "--output", output, "--canvas", style, "--quiet")[0], 0)
        picture = pictures(output)[5]
        self.assertEqual(picture.shape, (1080, 1080, 3))
        self.assertLessEqual(numpy.abs(picture[100, 540].astype(int) - [255, 0, 0]).max(), 3)

        status, project, _ = run("project", self.recording)
        self.assertEqual(status, 0)
        project = json.loads(project)
        project["segments"][0].update(timelineStart=0.5, duration=0.5)
        project["canvas"] = json.loads(style.read_text())
        file = self.folder / "edited.json"
        file.write_text(json.dumps(project))
        output = self.folder / "edited.mp4"
        self.assertEqual(run("export", file, "--output", output, "--quiet")[0], 0)
        self.assertAlmostEqual(float(probe(output)[0]["duration"]), 1, delta=0.1)
        first, last = pictures(output)[0], pictures(output)[-1]
        self.assertLessEqual(numpy.abs(first[540, 540].astype(int) - [255, 0, 0]).max(), 3, "a gap shows the background")
        self.assertGreater(numpy.abs(last[540, 540].astype(int) - [255, 0, 0]).max(), 50)

    def test_an_export_replaces_the_file_and_a_terminal_gets_a_bar(self):
        output = self.folder / "out.mp4"
        output.write_text("old")
        typed = subprocess.run(["script", "-qec", f"'{KELDRA}' export '{self.recording}' --output '{output}'", "/dev/null"],
                               stdin=subprocess.DEVNULL, capture_output=True, text=True)
        self.assertEqual(typed.returncode, 0)
        self.assertIn("100%", typed.stdout)
        self.assertIn("█", typed.stdout)
        self.assertEqual(probe(output)[1]["codec_name"], "h264")

    def test_without_a_graphics_processor_that_proves_itself_x264_encodes(self):
        for encoder in ("auto", "vaapi", "nvenc", "qsv"):
            output = self.folder / f"{encoder}.mp4"
            status, _, words = run("export", self.recording, "--output", output, "--quiet", "--encoder", encoder)
            self.assertEqual((encoder, status), (encoder, 0))
            self.assertEqual(probe(output)[1]["codec_name"], "h264")
            self.assertIn(words.count("\n"), (0, 1), "at most one line says which encoder was refused, and why")
        self.assertEqual(run("export", self.recording, "--output", self.folder / "no.mp4", "--encoder", "other")[0], 2)
