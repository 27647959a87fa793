"""Microphone and camera in a recording: everything stands where it happened, whatever is plugged in and out."""
import json
import statistics

from devices import Device, beeps, flashes, is_prompt, offsets
from harness import Recording, Scene, TestCase, pictures, run, sound, stamps
from test_effects import growing, wait

# The middle of the bubble on a display of 1920x1080.
BUBBLE = (1920 - 24 - 120, 1080 - 24 - 120)


class SourcesTest(TestCase):
    def test_devices_are_listed_while_they_are_there(self):
        with Device("microphone", "a-mic", description="A microphone"), Device("camera", "a-cam", description="A camera"):
            listed = json.loads(run("sources", "--json")[1])
            table = run("sources")[1]
        self.assertEqual(listed["microphones"], [{"id": "a-mic", "name": "A microphone"}])
        self.assertEqual(listed["cameras"], [{"id": "a-cam", "name": "A camera"}])
        self.assertIn("Cameras\n  a-cam  A camera\nMicrophones\n  a-mic  A microphone\n", table)
        listed = json.loads(run("sources", "--json")[1])
        self.assertEqual((listed["microphones"], listed["cameras"]), ([], []))

    def test_what_is_not_there_is_refused(self):
        for option, what in (("--microphone", "microphone"), ("--camera", "camera")):
            status, out, err = run("record", "--display", 1, option, "--output-dir", self.folder)
            self.assertEqual((status, out), (1, ""))
            self.assertOneLine(err, f"there is no {what}", "leave")
            with Device(what, "some", description="Some device"):
                status, out, err = run("record", "--display", 1, option, "other", "--output-dir", self.folder)
                self.assertEqual((status, out), (1, ""))
                self.assertOneLine(err, '"other"', "some (Some device)")
            status, out, err = run("record", "--display", 1, option, "--output-dir", self.folder,
                                   environment={"XDG_RUNTIME_DIR": str(self.folder)})
            self.assertEqual((status, out), (1, ""))
            self.assertOneLine(err, "PipeWire", "start it")
        with Device("camera"):
            status, out, err = run("record", "--display", 1, "--camera", "--output-dir", self.folder,
                                   environment={"KELDRA_CAPTURE": "display"})
            self.assertEqual((status, out), (1, ""))
            self.assertOneLine(err, "--camera")
        self.assertEqual(list(self.folder.glob("*.mov")), [])


class FlashAndBeepTest(TestCase):
    def test_each_flash_and_beep_stands_where_it_was(self):
        with Device("microphone", ppm=200, every=0.4) as microphone, Scene("--rate", 4) as scene:
            recording = Recording(self.folder, "--display", 1, options=["--microphone"])
            growing(recording, 1000)
            wait(9)
            path = recording.stop()
        begin = recording.begin()
        heard = offsets([begin + moment for moment in beeps(sound(path))], microphone.moments)
        seen = [late for _, late in flashes(path, scene, begin)]
        for what, late, fewest in (("beeps", heard, 18), ("flashes", seen, 25)):
            distances = [abs(each) for each in late]
            self.assertGreater(len(distances), fewest, what)
            self.assertLess(statistics.median(distances), 0.020, what)
            self.assertLess(max(distances), 0.050, what)
        if is_prompt():
            self.assertNotIn("gap", recording.log, "nothing was lost, so nothing is silent")


class UnplugTest(TestCase):
    def test_what_is_unplugged_in_mid_recording_leaves_the_rest_right(self):
        with Scene("--geometry", "800x480+0+0", "--rate", 10) as scene:
            microphone, camera = Device("microphone", every=0.3), Device("camera", every=0)
            recording = Recording(self.folder, "--display", 1, options=["--microphone", "--camera", camera.name])
            growing(recording, 1000)
            wait(2)
            microphone.unplug()
            camera.unplug()
            wait(1.5)
            with Device("microphone", every=0.3) as again, Device("camera", every=0):
                wait(2.5)
                path = recording.stop()
        begin = recording.begin()
        for line in ("[KELDRA Mic] keldra-test-microphone is gone", "[KELDRA Mic] keldra-test-microphone is back",
                     "[KELDRA Camera] keldra-test-camera is gone", "[KELDRA Mic] gap detected"):
            self.assertIn(line, recording.log)

        samples = sound(path)
        times = stamps(path)
        self.assertGreater(len(samples) / 48000, times[-1] - 0.1, "the sound goes on to the end")
        heard = [begin + moment for moment in beeps(samples)]
        reported = microphone.moments + again.moments
        self.assertLess(max(map(abs, offsets(heard, reported))), 0.050)
        before = [moment for moment in heard if moment <= microphone.moments[-1] + 0.05]
        after = [moment for moment in heard if moment >= again.moments[0] - 0.05]
        self.assertGreater(len(before), 4)
        self.assertGreater(len(after), 4)
        self.assertEqual(len(before) + len(after), len(heard), "between them nothing is heard")

        self.assertLess(max(abs(late) for _, late in flashes(path, scene, begin)), 0.2, "the picture went on")
        # All colours of the camera are bright, and the desktop behind it is black.
        bubbles = [bool(picture.max() > 100) for picture in pictures(path, (BUBBLE[0] - 2, BUBBLE[1] - 2, 4, 4))]
        changes = [now for was, now in zip(bubbles, bubbles[1:]) if was != now]
        self.assertTrue(bubbles[0])
        self.assertEqual(changes, [False, True], "the camera goes from the picture, and comes back")
