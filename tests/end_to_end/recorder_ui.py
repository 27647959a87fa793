"""The recorder's windows, found by their titles and clicked with the mouse as a user would."""
import os
import subprocess

from harness import until, wait, xdotool

# Where the controls are, in points from each panel's upper left corner.
CONTROL = {"quit": (18, 38), "record": (83, 38), "area": (169, 38), "window": (233, 38), "display": (297, 38),
           "camera": (366, 38), "microphone": (438, 38), "settings": (494, 38)}
SETTINGS = {"show clicks": (252, 46), "click intensity": (200, 94), "click sound": (252, 122), "classic": (206, 156),
            "highlight": (252, 190), "intensity": (60, 238), "size": (220, 282), "10 seconds": (228, 446), "low": (228, 511),
            "save to": (143, 576), "open a video": (143, 641), "share usage": (252, 704)}


def window(title):
    """Where the window of that title is, (x, y, width, height), or None while it is not shown."""
    found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{title}$"], stdout=subprocess.PIPE,
                           stderr=subprocess.DEVNULL, text=True).stdout.split()
    if not found:
        return None
    said = subprocess.run(["xdotool", "getwindowgeometry", "--shell", found[0]], stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, text=True).stdout
    values = dict(line.split("=") for line in said.split() if "=" in line)
    return tuple(int(values[key]) for key in ("X", "Y", "WIDTH", "HEIGHT")) if "HEIGHT" in values else None


def shown(title):
    return until(lambda: window(title), f"window \"{title}\"")


def gone(title):
    until(lambda: window(title) is None, f"end of the window \"{title}\"")


def has_keyboard(title):
    """What is typed goes to the window of that title, from now on."""
    def focused():
        return subprocess.run(["xdotool", "getwindowfocus", "getwindowname"], stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, text=True).stdout.strip()
    until(lambda: focused() == title, f"keyboard for the window \"{title}\"")


def escape(title):
    """Leaves a window that has the keyboard, or is about to get it."""
    has_keyboard(title)
    xdotool("key", "Escape")
    gone(title)


def escape_selection():
    """Leaves the selection, which takes the keyboard from whoever has it as soon as that one lets go."""
    until(lambda: window("selection-overlay") is None or xdotool("key", "Escape") or wait(0.2), "end of the selection")


def click(title, place, times=1):
    x, y, _, _ = shown(title)
    factor = float(os.environ.get("QT_SCALE_FACTOR", 1))
    xdotool("mousemove", x + round(place[0] * factor), y + round(place[1] * factor))
    for _ in range(times):
        xdotool("click", 1)


def press(name, times=1):
    """A button of the control panel."""
    click("KELDRA", CONTROL[name], times)


def drag(begin, end):
    """From one place of the screen to another, as a hand does: a first bit, by which a drag is known, and then the rest."""
    first = [a + (12 if b > a else -12) for a, b in zip(begin, end)]
    xdotool("mousemove", *begin, "mousedown", 1, "mousemove", *first, "sleep", 0.2, "mousemove", *end, "sleep", 0.2, "mouseup", 1)


def pick_area(begin, end):
    press("area")
    shown("selection-overlay")
    drag(begin, end)
    gone("selection-overlay")
    shown("selection-preview")


def start_recording():
    """Through the countdown, and until there is something to keep."""
    press("record")
    shown("countdown")
    shown("Recording time")
    wait(1)


def stop_recording():
    press("record")
    return shown("Recording saved")
