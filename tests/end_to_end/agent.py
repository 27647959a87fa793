"""The desktop agent as a user meets it: started, asked things over the bus, and ended."""
import os
import pathlib
import signal
import subprocess
import tempfile

import recorder_ui
from harness import DEADLINE, KELDRA, until, xdotool

BUS_NAME = "com.keldra.KELDRA"


def ask_bus(method, *arguments):
    """The answer of the session bus, or nothing."""
    done = subprocess.run(["dbus-send", "--session", "--print-reply=literal", "--dest=org.freedesktop.DBus",
                           "/org/freedesktop/DBus", f"org.freedesktop.DBus.{method}", *arguments],
                          capture_output=True, text=True, timeout=DEADLINE)
    return done.stdout.strip() if done.returncode == 0 else None


def owner():
    """The process that others find under the program's name, if any."""
    name = ask_bus("GetNameOwner", f"string:{BUS_NAME}")
    answer = name and ask_bus("GetConnectionUnixProcessID", f"string:{name}")
    return int(answer.split()[-1]) if answer else None


class Home:
    """A user's folders with nothing in them; settings are given as in the settings file."""

    def __init__(self, **settings):
        self._folder = tempfile.TemporaryDirectory()
        self.path = pathlib.Path(self._folder.name)
        self.recordings = self.path / "Recordings"
        self.recordings.mkdir()
        self.data = self.path / "data"
        file = self.path / "config/KELDRA/KELDRA.ini"
        file.parent.mkdir(parents=True)
        settings = {"outputDirectoryPath": self.recordings, "countdownSeconds": 3, **settings}
        file.write_text("[General]\n" + "".join(f"preferences.{name}={value}\n" for name, value in settings.items()))
        self.settings = file
        self.environment = {"HOME": str(self.path), "XDG_CONFIG_HOME": str(self.path / "config"),
                            "XDG_CACHE_HOME": str(self.path / "cache"), "KELDRA_DATA_HOME": str(self.data)}

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._folder.cleanup()


class Agent:
    """A start of the agent. `process` is the program itself, whatever watches it."""

    def __init__(self, home, *arguments, watcher=(), environment=None):
        self.process = subprocess.Popen([*watcher, KELDRA, *map(str, arguments)], stdin=subprocess.DEVNULL,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                        env={**os.environ, **home.environment, **(environment or {})})

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.kill()
        self.process.communicate()

    def is_found(self):
        """Waits until this copy is the one that others find."""
        until(lambda: owner() == self.process.pid or self.process.poll() is not None, "copy under the program's name")
        if self.process.poll() is not None:
            raise AssertionError(f"the agent ended with {self.process.returncode}: {self.process.communicate()}")
        return self

    def end(self, number=signal.SIGTERM):
        self.process.send_signal(number)
        return self.ended()

    def ended(self):
        """Waits for its end; the exit status and what it said."""
        out, err = self.process.communicate(timeout=DEADLINE)
        return self.process.returncode, out, err


def record_display(recordings):
    """Records the display, as a user does it with the mouse; the growing file."""
    recorder_ui.press("display")
    recorder_ui.shown("selection-overlay")
    recorder_ui.gone("KELDRA")
    xdotool("mousemove", 500, 300, "click", 1)
    recorder_ui.shown("KELDRA")
    recorder_ui.start_recording()
    return until(lambda: next(recordings.glob("KELDRA-*.mov"), None), "recording")
