"""Pictures of the recorder in every state: scripts/screenshots runs this on a desktop of its own.

    screenshots.py FOLDER
"""
import os
import pathlib
import subprocess
import sys
import time

from agent import Agent, Home
from devices import Device
from harness import BUILD, Scene, xdotool
from recorder_ui import gone, pick_area, press, shown, stop_recording

PANELS = str(BUILD / "keldra_panels")


class Camera:
    def __init__(self, folder):
        self.folder = folder

    def take(self, name, patience=0.7):
        """A picture of the whole screen, after what moves has come to rest."""
        time.sleep(patience)
        subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", "-f", "x11grab", "-draw_mouse", "1", "-video_size",
                        "1920x1080", "-i", os.environ["DISPLAY"], "-frames:v", "1", str(self.folder / f"{name}.png")], check=True)
        print(name, flush=True)


def paint_wallpaper(folder):
    picture = folder / "wallpaper.png"
    subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", "-f", "lavfi", "-i",
                    "gradients=s=1920x1080:x0=0:y0=0:x1=1920:y1=1080:c0=0x27304f:c1=0x8a4f6d:c2=0xe39a72:n=3:d=1:speed=0.00001",
                    "-frames:v", "1", str(picture)], check=True)
    subprocess.run(["feh", "--no-fehbg", "--bg-fill", str(picture)], check=True)


def panels(camera):
    """Scripted moments, one after the other."""
    moments = subprocess.run([PANELS], stdout=subprocess.PIPE, text=True, check=True).stdout.split()
    for moment in moments:
        shown_panels = subprocess.Popen([PANELS, moment], stdout=subprocess.PIPE, text=True)
        shown_panels.stdout.readline()
        camera.take(f"panels-{moment}", 0.4)
        shown_panels.kill()
        shown_panels.communicate()


def recorder(camera):
    """The real program, in the order in which its user meets it."""
    with Home(showCursorHighlight="true", showClickIndicators="true") as home, Device("camera"), Device("microphone"), \
            Scene("--managed", "--geometry", "760x460+560+220", "--title", "A window"), Agent(home) as agent:
        agent.is_found()
        shown("KELDRA")
        camera.take("recorder")
        for mode in ("area", "window", "display"):
            press(mode)
            shown("selection-overlay")
            xdotool("mousemove", 900, 450)
            if mode == "area":
                xdotool("mousemove", 500, 160, "mousedown", 1, "mousemove", 700, 400, "mousemove", 1400, 740)
            camera.take(f"select-{mode}")
            xdotool("mouseup", 1, "key", "Escape")
            gone("selection-overlay")
            # A drag that ends is a selection.
            if mode == "area":
                press("area")
        pick_area((500, 160), (1400, 740))
        camera.take("preview")
        press("camera")
        press("microphone")
        shown("Camera")
        camera.take("ready")
        press("record")
        shown("countdown")
        camera.take("countdown")
        shown("Recording time")
        xdotool("mousemove", 900, 500, "mousedown", 1)
        camera.take("recording", 0.15)
        xdotool("mouseup", 1)
        stop_recording()
        camera.take("saved")
        agent.end()


def main(folder):
    camera = Camera(pathlib.Path(folder))
    paint_wallpaper(camera.folder)
    panels(camera)
    recorder(camera)


if __name__ == "__main__":
    main(sys.argv[1])
