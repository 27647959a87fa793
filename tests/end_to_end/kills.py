"""A recording that is killed, and what is left of it: shared by the test and the soak."""
import contextlib
import os
import pathlib
import time

from harness import FAULTS, Recording, Scene, onsets, until, xdotool
from takes import ALLOWED, JudgedTake

# Slow enough that a kill comes while the file is finished: its copy has no name until it is whole.
SLOW_FINISH = {**FAULTS, "KELDRA_FAULTS_WRITE_MS": "50", "KELDRA_FAULTS_WRITES_TO": " (deleted)"}


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
            until(lambda: self._has_copy(recording.process.pid) or recording.process.poll() is not None, "finishing")
        killed = recording.kill()
        # What came after the stop was not to be recorded.
        self.killed = self.killed if while_finishing else killed

    def _has_copy(self, pid):
        """Whether that process writes a file without a name beside the take."""
        links = []
        for each in pathlib.Path(f"/proc/{pid}/fd").glob("*"):
            # It may be closed by now.
            with contextlib.suppress(OSError):
                links.append(os.readlink(each))
        return any(link.startswith(f"{self.path.parent}/#") for link in links)

    def _judge(self, scene, clicks):
        if hidden := [each.name for each in self.path.parent.glob(".*")]:
            self.faults.append(f"left beside it: {hidden}")
        judged = JudgedTake(self.path, scene, self.killed)
        self.faults += judged.faults
        self.lost_pictures, self.lost_sound = judged.pictures, judged.sound
        if clicks:
            heard = [judged.zero + second for second in onsets(judged.samples)]
            # How late they are is another's question, and the file's zero is known to a frame at best.
            unheard = [click for click in scene.clicks
                       if judged.zero < click < self.killed - ALLOWED and not any(abs(click - h) < 0.3 for h in heard)]
            if unheard:
                self.faults.append(f"{len(unheard)} clicks missing")
