"""What a recording does when its disk is full, slow, or gone."""
import re
import shutil
import time

from full_disk import MEGABYTE, FilledTake, SmallDisk
from harness import FAULTS, Recording, Scene, TestCase, boxes, numbers_of, run, sound, stamps, until


class FullDiskTest(TestCase):
    def disk(self, megabytes):
        disk = SmallDisk.make(self.folder, megabytes)
        if disk is None:
            self.skipTest("nobody may make a disk here")
        return self.enterContext(disk)

    def test_no_recording_starts_where_there_is_no_room(self):
        disk = self.disk(40)
        status, out, err = run("record", "--display", 1, "--seconds", 1, "--output-dir", disk.path)
        self.assertEqual((status, out), (1, ""))
        self.assertOneLine(err, "There is too little free space on the output folder's disk to record.", "256 MB are needed")
        self.assertEqual(list(disk.path.iterdir()), [])

    def test_a_disk_nearly_full_ends_a_recording_as_a_stop_does(self):
        for left, isOrdinary in ((60 * MEGABYTE, True), (10 * MEGABYTE, False)):
            with self.subTest(left=left), self.disk(400) as disk:
                take = FilledTake(disk, self.folder / "data", 2, left)
                self.assertEqual(take.faults, [])
                self.assertEqual(take.status, 0, take.words)
                self.assertEqual(take.isOrdinary, isOrdinary, take.words)
                self.assertEqual([file.name for file in take.path.parent.iterdir()], [take.path.name])

    def test_a_disk_full_at_once_loses_nothing_that_was_there(self):
        for on_the_same_disk in (True, False):
            with self.subTest(on_the_same_disk=on_the_same_disk), self.disk(400) as disk:
                take = FilledTake(disk, (disk.path if on_the_same_disk else self.folder) / "data", 2, 0)
                self.assertEqual(take.faults, [])
                # A few bytes may be enough for the end, when it comes at once.
                if take.status == 1:
                    expected = "data/KELDRA/RecordingRecovery/KELDRA-" if on_the_same_disk else "takes/.recovered-KELDRA-"
                    self.assertTrue(str(take.path.relative_to(disk.path)).startswith(expected), take.path)


class SlowDiskTest(TestCase):
    def test_sound_over_a_still_screen_is_brought_to_the_disk_every_second(self):
        log = self.folder / "syncs"
        log.touch()
        seconds = 5
        with Scene("--still"):
            recording = Recording(self.folder, "--display", 1, options=["--click-sound", "soft"],
                                  environment={**FAULTS, "KELDRA_FAULTS_LOG": str(log)})
            recording.file()
            begin = until(lambda: log.read_text().split(), "first sync")[0]
            until(lambda: time.monotonic() - float(begin) > seconds, "end of the recording")
            end = time.monotonic()
            path = recording.stop()
        syncs = [moment for moment in map(float, log.read_text().split()) if moment <= end]
        self.assertGreaterEqual(len(syncs), seconds, syncs)
        self.assertGreaterEqual(len(sound(path)) / 48000, seconds)
        self.assertLessEqual(len(stamps(path)), 5, "the screen stood still")

    def test_a_writer_that_starves_leaves_a_file_that_is_right(self):
        with Scene("--rate", 30) as scene:
            recording = Recording(self.folder, "--display", 1, options=["--click-sound", "soft"],
                                  environment={**FAULTS, "KELDRA_FAULTS_WRITE_MS": "700"})
            path = recording.file()
            until(lambda: path.stat().st_size > 0, "first fragment")
            begin = time.monotonic()
            until(lambda: time.monotonic() - begin > 4, "end of the recording")
            path = recording.stop()
        self.assertRegex(recording.log, r" [1-9]\d* dropped", "the writer was behind")
        self.assertNotIn("moof", boxes(path))
        numbers, times = numbers_of(path), stamps(path)
        self.assertNotIn(None, numbers)
        self.assertEqual(numbers, sorted(numbers))
        self.assertRising(times)
        for number, moment in list(zip(numbers, times))[1:]:
            self.assertAlmostEqual(recording.begin() + moment, scene.when(number), delta=0.1)
        self.assertGreater(len(sound(path)) / 48000, times[-1] - 0.05, "the sound lasts as long as the pictures")

    def test_a_folder_that_vanishes_is_told_though_nothing_moves(self):
        takes = self.folder / "takes"
        takes.mkdir()
        with Scene("--still"):
            recording = Recording(takes, "--display", 1)
            path = recording.file()
            until(lambda: path.stat().st_size > 0, "first fragment")
            shutil.rmtree(takes)
            _, err = recording.process.communicate(timeout=60)
        self.assertEqual(recording.process.returncode, 1)
        self.assertRegex(err, re.compile(rf"^keldra: {re.escape(path.name)}: the file was removed or moved, or its "
                                         "folder, while it was recorded$", re.MULTILINE))
