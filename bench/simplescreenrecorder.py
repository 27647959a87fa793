"""Drives SimpleScreenRecorder without a hand on it; shared by the benchmarks here."""
import os
import pathlib
import shutil
import subprocess
import time

from measure import processor_seconds

PROGRAM = "simplescreenrecorder"
SETTINGS = """[input]
audio_enabled=false
video_area=screen
video_area_screen=0
video_frame_rate=60
video_record_cursor=true
video_scale=false

[output]
add_timestamp=false
container=mkv
file={file}
separate_files=false
video_allow_frame_skipping=true
video_codec=h264
video_h264_crf=23
video_h264_preset={preset}

[welcome]
skip_page=true
"""
PATIENCE = 30


def is_installed():
    return shutil.which(PROGRAM) is not None


def record(folder, seconds, preset, measure_server):
    """Records the whole screen with libx264; the file, and the CPU seconds of the program and of the X server from the
    moment on when it records, with the finishing of the file."""
    folder = pathlib.Path(folder)
    file = folder / "ssr.mkv"
    settings = folder / "ssr.conf"
    settings.write_text(SETTINGS.format(file=file, preset=preset))
    process = subprocess.Popen([PROGRAM, f"--settingsfile={settings}", f"--logfile={folder / 'ssr.log'}", "--no-systray",
                                "--start-hidden", "--start-recording"], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, text=True, env={**os.environ, "HOME": str(folder)})
    patient_until = time.monotonic() + PATIENCE
    while not file.exists():
        if process.poll() is not None or time.monotonic() > patient_until:
            process.kill()
            raise SystemExit(f"{PROGRAM} does not record:\n" + (folder / "ssr.log").read_text())
        time.sleep(0.01)
    program, server = processor_seconds(process.pid), measure_server()
    time.sleep(seconds)
    process.stdin.write("record-save\nquit\n")
    process.stdin.close()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise SystemExit(f"{PROGRAM} ended with {process.returncode}")
    return file, usage.ru_utime + usage.ru_stime - program, measure_server() - server
