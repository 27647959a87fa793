"""A recording whose disk fills up, and what is left of it: shared by the test and the soak."""
import errno
import os
import pathlib
import re
import shutil
import subprocess
import time

from harness import Recording, Scene, boxes, until
from takes import JudgedTake

MEGABYTE = 1 << 20
ENDED = "The disk is nearly full, so the recording was ended. It is saved."
KEPT = "what was recorded until then is kept as "


class SmallDisk:
    """A disk of its own in memory, seen through the process that holds it; None where nobody may make one."""

    @staticmethod
    def make(folder, megabytes):
        place = pathlib.Path(folder) / "disk"
        place.mkdir(exist_ok=True)
        if shutil.which("unshare") is None:
            return None
        as_root = [] if os.geteuid() == 0 else ["--map-root-user"]
        holder = subprocess.Popen(
            ["unshare", *as_root, "--mount", "sh", "-c",
             f"mount -t tmpfs -o size={megabytes}m,mode=777 none '{place}' && echo up && exec cat"],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        disk = SmallDisk(holder, place)
        if holder.stdout.readline() == "up\n":
            return disk
        disk.__exit__()
        return None

    def __init__(self, holder, place):
        self._holder = holder
        self.path = pathlib.Path(f"/proc/{holder.pid}/root{place}")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._holder.stdin.close()
        self._holder.wait()
        self._holder.stdout.close()

    def free(self):
        room = os.statvfs(self.path)
        return room.f_bavail * room.f_frsize

    def fill(self, left):
        """Takes everything but so many bytes, in one step."""
        with open(self.path / "filler", "ab") as filler:
            while self.free() > left:
                try:
                    os.posix_fallocate(filler.fileno(), os.fstat(filler.fileno()).st_size, self.free() - left)
                except OSError as error:
                    # The recorder took some of it in between.
                    if error.errno != errno.ENOSPC:
                        raise


class FilledTake:
    """Records the scene with sound onto the disk, leaves it `left` bytes after a while, and judges how that ends.

    status, words  the recorder's
    path           where what was recorded is now
    faults         what is wrong, in words
    """

    def __init__(self, disk, data_home, seconds, left, options=("--click-sound", "soft")):
        self.faults = []
        output = disk.path / "takes"
        output.mkdir()
        with Scene("--rate", 8) as scene:
            recording = Recording(output, "--display", 1, options=options,
                                  environment={"KELDRA_DATA_HOME": str(data_home)})
            file = recording.file()
            until(lambda: file.exists() and file.stat().st_size > 0, "first fragment")
            begin = time.monotonic()
            until(lambda: time.monotonic() - begin >= seconds, "moment of the filling")
            self.filled = time.monotonic()
            disk.fill(left)
            out, self.words = recording.process.communicate(timeout=60)
            self.status = recording.process.returncode
            self._find(output, file, out)
            if self.path is not None:
                self._judge(scene)

    def _find(self, output, file, out):
        self.path = None
        if self.status == 0:
            self.path = pathlib.Path(out.strip().splitlines()[-1])
            if self.path != file or ENDED not in self.words:
                self.faults.append(f"ended as if nothing had happened: {self.words}")
            return
        said = re.search(rf"^keldra: .*No space left on device; {KEPT}(.*)$", self.words, re.MULTILINE)
        if self.status != 1 or said is None:
            self.faults.append(f"unclear words: {self.words}")
            return
        self.path = pathlib.Path(said.group(1))
        if [name for name in os.listdir(output) if not name.startswith(".")]:
            self.faults.append("a failed take is left under its name")

    def _judge(self, scene):
        self.isOrdinary = "moof" not in boxes(self.path)
        judged = JudgedTake(self.path, scene, self.filled)
        self.faults += judged.faults
        self.lost, self.lost_sound = judged.pictures, judged.sound
