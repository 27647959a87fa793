"""The clip that exports and playback are measured with, and projects made of it."""
import copy
import json
import pathlib
import random
import subprocess
import uuid

from measure import KELDRA

SECONDS = 20


def make_clip(path, is_text=False):
    """Twenty seconds of 1080p60 of somebody at work: a page that is read and scrolled on every few seconds, a line that is
    typed, a lively window that is moved for a while, a pointer, and two tracks of sound. The lively window takes a third of
    the screen; with `is_text` it is small, and the page large. Encoded as recordings are."""
    page = pathlib.Path(path).with_suffix(".txt")
    # Letters that mean something to the filter are left out.
    page.write_text("".join(letter for letter in pathlib.Path(__file__).read_text() * 6 if letter not in "\\%"))
    # Of every four seconds the last one scrolls.
    scrolled = "480*(floor(t/4)+clip(mod(t,4)-3,0,1))"
    page_width, lively, lively_x, lively_y = (1000, "480x320", 1390, 600) if is_text else (560, "960x720", 920, 260)
    pictures = ["color=0x1e1e2e:s=1920x1080:r=60,drawbox=0:0:1920:40:0x313244:fill,drawbox=0:40:300:1040:0x181825:fill,"
                "drawgrid=w=1920:h=36:t=1:c=0x313244@0.5",
                f"color=0xf8f8f2:s={page_width}x960:r=60,drawtext=textfile={page}:fontcolor=0x202020:fontsize=20:x=12:y='8-{scrolled}'",
                f"testsrc2=s={lively}:r=60", "color=white:s=16x24:r=60",
                "color=0x11111b:s=460x40:r=60,drawtext=text='and a line of words that somebody types in':"
                "fontcolor=0xcdd6f4:fontsize=20:x=8:y=10",
                "color=0x11111b:s=460x40:r=60"]
    sounds = ["sine=330:r=48000", "sine=700:beep_factor=2:r=48000"]
    composed = ("[0][1]overlay=330:80[a];"
                f"[a][2]overlay=x='{lively_x}+40*between(t,6,9)*sin(t*3)':y='{lively_y}+60*between(t,6,9)*sin(t*2)':eval=frame[b];"
                "[4][5]overlay=x='11*floor(mod(t,5)*8)':eval=frame[typed];[b][typed]overlay=1390:100[c];"
                "[c][3]overlay=x='900+700*sin(t*1.3)':y='500+400*cos(t*1.7)':eval=frame,format=yuv420p[v]")
    inputs = [word for source in pictures + sounds for word in ("-f", "lavfi", "-i", source)]
    subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-y", *inputs, "-filter_complex", composed,
                    "-map", "[v]", "-map", "6", "-map", "7", "-t", str(SECONDS), "-c:v", "libx264", "-preset", "ultrafast",
                    "-tune", "zerolatency", "-b:v", "10368000", "-g", "60", "-colorspace", "bt709",
                    "-color_primaries", "bt709", "-color_trc", "bt709", "-c:a", "pcm_s16le", path], check=True)


def fresh_project(clip):
    """What the editor opens for the clip, as a dictionary."""
    return json.loads(subprocess.run([KELDRA, "project", clip], check=True, stdout=subprocess.PIPE, text=True).stdout)


def with_zoom(project):
    zoomed = copy.deepcopy(project)
    zoomed["zoomBlocks"] = [{"id": str(uuid.UUID(int=1)).upper(), "timelineStart": 8, "duration": 4, "scale": 2,
                             "focus": {"x": 0.3, "y": 0.4}, "rampDuration": 0.6}]
    return zoomed


def shuffled_pieces(count):
    """Where each of `count` equal pieces of the clip begins, in the order of a cut."""
    starts = [index * SECONDS / count for index in range(count)]
    random.Random(3).shuffle(starts)
    return starts


def with_cuts(project, count):
    """The clip cut into that many equal pieces, shuffled."""
    cut = copy.deepcopy(project)
    length = SECONDS / count
    cut["segments"] = [{"id": str(uuid.UUID(int=index + 1)).upper(), "duration": length, "sourceStart": start,
                        "timelineStart": index * length, "trackIndex": 0}
                       for index, start in enumerate(shuffled_pieces(count))]
    return cut


def write(project, path):
    with open(path, "w", encoding="utf-8") as file:
        json.dump(project, file)
