"""The test scene, and what of it a recording has caught; shared by the benchmarks of recording."""
import os
import sys

from measure import BUILD, ROOT

os.environ.setdefault("KELDRA_BUILD", str(BUILD))
sys.path.insert(0, str(ROOT / "tests" / "end_to_end"))
from devices import Device  # noqa: E402, F401
from harness import Scene, numbers_of, record, xdotool  # noqa: E402, F401


class Losses:
    """Of the pictures that the scene showed between the first and the last in the file: how many there were, and how
    many are missing; then the same of those that stood at least 1/60 s and 2 ms."""

    def __init__(self):
        self.shown = self.missing = self.stood = self.missing_of_stood = 0

    def add(self, scene, path):
        numbers = [number for number in numbers_of(path) if number is not None]
        recorded = set(numbers)
        shown = {number for number, _ in scene.shown if numbers[0] <= number <= numbers[-1]}
        stood = {number for number in scene.standing(1 / 60 + 0.002) if numbers[0] <= number <= numbers[-1]}
        self.shown += len(shown)
        self.missing += len(shown - recorded)
        self.stood += len(stood)
        self.missing_of_stood += len(stood - recorded)

    def __str__(self):
        return (f"{self.shown} shown, {self.missing} of them not in the file; "
                f"{self.stood} stood 1/60 s + 2 ms, {self.missing_of_stood} of these not in the file")
