"""Starts and ends of the desktop agent."""
import signal
import subprocess
import tempfile
import unittest

from agent import Agent, Home, owner, record_display
from harness import plays, probe, until, xdotool
from recorder_ui import escape, gone, has_keyboard, shown, window
from session import Session


VIDEO_DIALOG = "Choose a video to edit"


def can_trace():
    """Some machines let nobody watch another program."""
    return subprocess.run(["strace", "-f", "-qq", "-o", "/dev/null", "true"]).returncode == 0


class AgentTestCase(unittest.TestCase):
    def setUp(self):
        self.home = self.enterContext(Home())

    def start(self, *arguments, **options):
        return self.enterContext(Agent(self.home, *arguments, **options))


class AgentTest(AgentTestCase):
    def test_it_starts_and_ends_at_a_signal(self):
        for number in signal.SIGTERM, signal.SIGINT, signal.SIGHUP:
            status, _, err = self.start().is_found().end(number)
            self.assertEqual((status, err), (0, ""))
            self.assertIsNone(owner())

    def test_without_a_display_it_says_so_in_one_line(self):
        for display, kind in ("", "x11"), (":4711", "x11"), ("nonsense", "x11"), ("", "wayland"):
            environment = {"DISPLAY": display, "XDG_SESSION_TYPE": kind}
            status, out, err = self.start(environment=environment).ended()
            self.assertEqual((status, out, err.count("\n")), (1, "", 1), err)
            self.assertIn("DISPLAY", err)

    def test_on_wayland_it_starts_and_says_what_cannot_be(self):
        agent = self.start(environment={"XDG_SESSION_TYPE": "wayland"}).is_found()
        shown("Notice")
        self.assertEqual(agent.end()[0], 0)

    def test_a_second_start_takes_the_place_of_an_idle_copy(self):
        first = self.start().is_found()
        second = self.start().is_found()
        self.assertEqual(first.ended()[0], 0)
        self.assertEqual(owner(), second.process.pid)

    def test_files_are_handed_to_the_copy_that_runs(self):
        first = self.start().is_found()
        movie = self.home.path / "a movie.mov"
        movie.write_bytes(b"")
        for arguments, title in ((movie,), "Notice"), ((movie.as_uri(),), "Notice"), (("--open",), VIDEO_DIALOG):
            self.assertEqual(self.start(*arguments).ended()[0], 0)
            shown(title)
        self.assertIsNone(first.process.poll())
        self.assertEqual(owner(), first.process.pid)

    def test_a_key_opens_a_video(self):
        self.start().is_found()
        shown("KELDRA")
        has_keyboard("KELDRA")
        xdotool("key", "ctrl+o")
        shown(VIDEO_DIALOG)
        escape(VIDEO_DIALOG)

    def test_copies_that_start_at_once_leave_one(self):
        copies = [self.start() for _ in range(3)]
        until(lambda: sum(copy.process.poll() is None for copy in copies) == 1 and owner(), "last copy")
        for copy in copies:
            if copy.process.poll() is not None:
                self.assertEqual(copy.ended()[0], 0)
            else:
                self.assertEqual(owner(), copy.process.pid)

    @unittest.skipUnless(can_trace(), "this machine allows no tracing")
    def test_it_opens_no_internet_socket_without_consent(self):
        with tempfile.NamedTemporaryFile("r") as trace:
            watched = self.start(watcher=("strace", "-f", "-qq", "-e", "trace=socket,connect", "-o", trace.name),
                                 environment={"ASAN_OPTIONS": "detect_leaks=0"})
            until(owner, "agent")
            self.start().is_found()
            self.assertEqual(watched.ended()[0], 0)
            calls = trace.read()
        self.assertIn("AF_UNIX", calls)
        self.assertNotIn("AF_INET", calls)

    def test_a_recording_that_could_not_be_finished_is_offered_once(self):
        folder = self.home.data / "KELDRA/RecordingRecovery"
        folder.mkdir(parents=True)
        (folder / "KELDRA-2026-01-01-00-00-00.mov").write_bytes(b"what was recorded")
        for is_offered in True, False:
            agent = self.start().is_found()
            shown("KELDRA")
            if is_offered:
                shown("Notice")
            else:
                self.assertIsNone(window("Notice"))
            agent.end()


class RecordingTestCase(AgentTestCase):
    def record(self, **options):
        self.agent = self.start(**options).is_found()
        self.file = record_display(self.home.recordings)

    def assertWhole(self):
        movies = list(self.home.recordings.iterdir())
        self.assertEqual(movies, [self.file])
        self.assertTrue(plays(self.file))
        self.assertGreater(float(probe(self.file)[0]["duration"]), 0)
        # An ordinary movie, no growing one, begins with its index or ends with it.
        self.assertNotIn(b"moof", self.file.read_bytes())
        self.assertFalse((self.home.data / "KELDRA/RecordingRecovery").exists())


class RecordingAgentTest(RecordingTestCase):
    def setUp(self):
        super().setUp()
        self.record()

    def test_a_signal_finishes_the_recording_without_windows(self):
        self.agent.process.send_signal(signal.SIGTERM)
        gone("KELDRA")
        gone("Recording time")
        status, _, err = self.agent.ended()
        self.assertEqual((status, err), (0, ""))
        self.assertWhole()

    def test_two_signals_finish_it_too(self):
        self.agent.process.send_signal(signal.SIGTERM)
        self.agent.process.send_signal(signal.SIGINT)
        self.assertEqual(self.agent.ended()[0], 0)
        self.assertWhole()

    def test_another_start_leaves_it_alone(self):
        movie = self.home.path / "a movie.mov"
        movie.write_bytes(b"")
        for arguments in ((), (movie,)):
            self.assertEqual(self.start(*arguments).ended()[0], 0)
        self.assertIsNone(self.agent.process.poll())
        self.assertEqual(owner(), self.agent.process.pid)
        self.assertIsNotNone(window("Recording time"))
        self.assertEqual(self.agent.end()[0], 0)
        self.assertWhole()


class LogoutTest(RecordingTestCase):
    def test_it_finishes_the_recording(self):
        with Session() as session:
            self.record(environment=session.environment)
            session.hears("saved")
            session.log_out()
            self.assertEqual(self.agent.ended()[0], 0)
            self.assertWhole()


if __name__ == "__main__":
    unittest.main()
