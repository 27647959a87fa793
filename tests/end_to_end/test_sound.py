"""Sound on the command line: how loud, what it looks like, and in an export's file."""
import json
import math
import subprocess

from harness import TestCase, run


def make(path, *arguments):
    subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", *arguments, str(path)], check=True)
    return path


class SoundTest(TestCase):
    def tone(self, name="tone.wav", expression="0.5*sin(2*PI*400*t)", seconds=2, *options):
        return make(self.folder / name, "-f", "lavfi", "-i", f"aevalsrc='{expression}':s=48000:d={seconds}", *options)

    def test_loudness_tells_peak_rms_and_gain(self):
        tone = self.tone()
        status, out, err = run("loudness", tone)
        self.assertEqual((status, err), (0, ""))
        levels = json.loads(out)
        self.assertEqual(list(levels), ["peak", "rms", "gain"])
        for name, wanted in (("peak", 0.5), ("rms", 0.5 / math.sqrt(2)), ("gain", 0.1 * math.sqrt(2) / 0.5)):
            self.assertAlmostEqual(levels[name], wanted, places=3, msg=name)

        halves = self.tone("halves.wav", "if(lt(t,1),0,0.25)")
        self.assertEqual(json.loads(run("loudness", halves, "--duration", 1)[1]), {"peak": 0, "rms": 0, "gain": None})
        for span in (("--start", 1), ("--start", 1.5, "--duration", 99)):
            self.assertAlmostEqual(json.loads(run("loudness", halves, *span)[1])["rms"], 0.25, places=3)

    def test_waveform_tells_heights_over_the_files_length(self):
        status, out, err = run("waveform", self.tone("steps.wav", "if(lt(t,1),0,0.5*sin(2*PI*400*t))"), "--buckets", 8)
        self.assertEqual((status, err), (0, ""))
        waveform = json.loads(out)
        self.assertAlmostEqual(waveform["duration"], 2, places=3)
        self.assertEqual(len(waveform["samples"]), 8)
        self.assertEqual(waveform["samples"][:3], [0, 0, 0])
        for height in waveform["samples"][5:]:
            self.assertAlmostEqual(height, (20 * math.log10(0.5) + 54) / 54, places=2)
        self.assertEqual(len(json.loads(run("waveform", self.folder / "steps.wav")[1])["samples"]), 2400)

    def test_files_without_sound_and_bad_words(self):
        silent = make(self.folder / "silent.mp4", "-f", "lavfi", "-i", "testsrc=d=0.5")
        self.assertEqual(run("waveform", silent), (0, '{"duration":0,"samples":[]}\n', ""))
        status, out, err = run("loudness", silent)
        self.assertEqual((status, out), (1, ""))
        self.assertOneLine(err, "silent.mp4", "no sound")
        for command in ("loudness", "waveform"):
            status, out, err = run(command, self.folder / "nowhere.wav")
            self.assertEqual((status, out), (1, ""))
            self.assertOneLine(err, "nowhere.wav", "No such file")
        for words in (["loudness"], ["loudness", "a", "b"], ["loudness", "a", "--start", "-1"],
                      ["loudness", "a", "--duration", "0"], ["loudness", "a", "--start", "soon"], ["waveform"],
                      ["waveform", "a", "--buckets", "0"], ["waveform", "a", "--buckets", "1.5"],
                      ["waveform", "a", "--buckets", "1e30"], ["waveform", "a", "--start", "1"]):
            status, out, err = run(*words)
            self.assertEqual((status, out), (2, ""), words)
            self.assertOneLine(err)
