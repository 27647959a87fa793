"""A recording that is killed, and what is left of it: shared by the test and the soak."""
import time

from harness import FAULTS, Recording, Scene, numbers_of, onsets, plays, sound, stamps, until, xdotool

# What a kill may cost, in seconds before it.
ALLOWED = 2
# Slow enough that a kill comes while the file is finished.
SLOW_FINISH = {**FAULTS, "KELDRA_FAULTS_WRITE_MS": "50", "KELDRA_FAULTS_WRITES_TO": ".finishing"}


class KilledTake:
    """Records the scene with sound, kills the recorder, and measures what the file lost.

    lost_pictures  how long before the kill the oldest picture change happened that is not in the file, in seconds
    lost_sound     how long before the kill the sound ends
    faults         what is wrong with what is there, in words
    """

    def __init__(self, folder, seconds, options=(), clicks=True, while_finishing=False, environment=None):
        self.faults = []
        with Scene("--rate", 8) as scene:
            self._record(folder, scene, seconds, options, clicks, while_finishing, environment)
            self._judge(scene, clicks)

    def _record(self, folder, scene, seconds, options, clicks, while_finishing, environment):
        options = [*options, *(["--click-sound", "soft"] if clicks else [])]
        recording = Recording(folder, "--display", 1, options=options, environment=environment)
        self.path = recording.file()
        until(lambda: self.path.stat().st_size > 0, "first fragment")
        begin = time.monotonic()
        while time.monotonic() - begin < seconds:
            if clicks:
                # And back to where it covers nothing that is looked at.
                xdotool("mousemove", 700, 200, "click", 1, "mousemove", 960, 540)
            pause = min(time.monotonic() + 0.4, begin + seconds)
            until(lambda: time.monotonic() >= pause, "moment of the kill")
        self.killed = time.monotonic()
        if while_finishing:
            recording.interrupt()
            hidden = self.path.with_name(f".{self.path.name}.finishing")
            until(lambda: hidden.exists() or recording.process.poll() is not None, "finishing")
        killed = recording.kill()
        # What came after the stop was not to be recorded.
        self.killed = self.killed if while_finishing else killed

    def _judge(self, scene, clicks):
        if not plays(self.path):
            self.faults.append("does not play")
        times, numbers = stamps(self.path), numbers_of(self.path)
        if None in numbers or numbers != sorted(numbers):
            self.faults.append("torn pictures")
        stood = {n for n in scene.standing(0.1) if numbers[0] <= n <= numbers[-1]}
        if stood - set(numbers):
            self.faults.append(f"{len(stood - set(numbers))} pictures missing within")
        lost = [moment for n, moment in scene.shown if n > numbers[-1] and moment < self.killed]
        self.lost_pictures = self.killed - min(lost, default=self.killed)
        # The first picture stood already when the recording began, so the second one sets the clock.
        zero = scene.when(numbers[1]) - times[1]
        samples = sound(self.path)
        self.lost_sound = max(0, self.killed - (zero + len(samples) / 48000))
        if clicks:
            heard = [zero + second for second in onsets(samples)]
            # How late they are is another's question, and the file's zero is known to a frame at best.
            unheard = [click for click in scene.clicks
                       if zero < click < self.killed - ALLOWED and not any(abs(click - h) < 0.3 for h in heard)]
            if unheard:
                self.faults.append(f"{len(unheard)} clicks missing")
        for name, seconds in (("pictures", self.lost_pictures), ("sound", self.lost_sound)):
            if seconds > ALLOWED:
                self.faults.append(f"{seconds:.2f} s of {name} lost")
