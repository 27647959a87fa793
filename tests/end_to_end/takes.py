"""What is in a take that ended early, beside what the scene showed: for takes that were killed and for those whose disk filled up."""
from harness import numbers_of, plays, sound, stamps

# What an end without warning may cost, in seconds before it.
ALLOWED = 2


class JudgedTake:
    """
    pictures  how long before the end the oldest picture change happened that is not in the file, in seconds
    sound     how long before the end the sound ends
    zero      the file's zero on the host clock
    samples   its sound
    faults    what is wrong with what is there, in words
    """

    def __init__(self, path, scene, end):
        self.faults = [] if plays(path) else ["does not play"]
        times, numbers = stamps(path), numbers_of(path)
        if None in numbers or numbers != sorted(numbers):
            self.faults.append("torn pictures")
        stood = {n for n in scene.standing(0.1) if numbers[0] <= n <= numbers[-1]}
        if stood - set(numbers):
            self.faults.append(f"{len(stood - set(numbers))} pictures missing within")
        lost = [moment for n, moment in scene.shown if n > numbers[-1] and moment < end]
        self.pictures = end - min(lost, default=end)
        # The first picture stood already when the recording began, so the second one sets the clock.
        self.zero = scene.when(numbers[1]) - times[1]
        self.samples = sound(path)
        self.sound = max(0, end - (self.zero + len(self.samples) / 48000))
        for name in ("pictures", "sound"):
            if getattr(self, name) > ALLOWED:
                self.faults.append(f"{getattr(self, name):.2f} s of {name} lost")
