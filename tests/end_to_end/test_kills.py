"""A killed recording keeps everything older than two seconds."""
import random
import time

from harness import Recording, Scene, TestCase, numbers_of, probe, run, stamps, until


class KillTest(TestCase):
    def test_three_kills(self):
        seed = random.randrange(2**32)
        chance = random.Random(seed)
        for attempt in range(3):
            with self.subTest(seed=seed, attempt=attempt), Scene("--rate", 8) as scene:
                recording = Recording(self.folder, "--display", 1)
                path = recording.file()
                begin = time.monotonic()
                length = chance.uniform(2.5, 5)
                until(lambda: time.monotonic() - begin > length, "moment of the kill")
                killed = recording.kill()
                numbers = numbers_of(path)
                self.assertNotIn(None, numbers)
                self.assertLess(killed - scene.when(numbers[-1]), 2, "no picture older than two seconds is lost")
                stood = set(n for n in scene.standing(0.1) if numbers[0] <= n <= numbers[-1])
                self.assertFalse(stood - set(numbers))
                self.assertEqual(run("frame", path, "--at", 1, "--output", self.folder / "frame.png")[0], 0,
                                 "what a kill left can be edited")
                path.unlink()

    def test_a_still_picture_survives_a_kill(self):
        with Scene("--still"):
            recording = Recording(self.folder, "--display", 1)
            path = recording.file()
            begin = time.monotonic()
            until(lambda: time.monotonic() - begin > 2, "moment of the kill")
            recording.kill()
        self.assertEqual(probe(path)[1]["width"], 1920)
        self.assertGreaterEqual(len(stamps(path)), 1)
