"""A killed recording keeps everything older than two seconds."""
import random
import time

from harness import Recording, Scene, TestCase, probe, run, stamps, until
from kills import SLOW_FINISH, KilledTake


class KillTest(TestCase):
    def test_three_kills(self):
        seed = random.randrange(2**32)
        chance = random.Random(seed)
        for attempt in range(3):
            with self.subTest(seed=seed, attempt=attempt):
                take = KilledTake(self.folder, chance.uniform(2.5, 5))
                self.assertEqual(take.faults, [])
                self.assertEqual([file.name for file in self.folder.glob("*.mov")], [take.path.name],
                                 "it stays where it was")
                self.assertEqual(run("frame", take.path, "--at", 1, "--output", self.folder / "frame.png")[0], 0,
                                 "what a kill left can be edited")
                take.path.unlink()

    def test_a_kill_while_the_file_is_finished_loses_nothing(self):
        # Slow enough that the kill comes in between.
        take = KilledTake(self.folder, 2, while_finishing=True,
                          environment=SLOW_FINISH)
        self.assertEqual(take.faults, [])
        self.assertLess(take.lost_sound, 0.3)

    def test_a_still_picture_survives_a_kill(self):
        with Scene("--still"):
            recording = Recording(self.folder, "--display", 1)
            path = recording.file()
            begin = time.monotonic()
            until(lambda: time.monotonic() - begin > 2, "moment of the kill")
            recording.kill()
        self.assertEqual(probe(path)[1]["width"], 1920)
        self.assertGreaterEqual(len(stamps(path)), 1)
