"""Starts and ends of the desktop agent."""
import pathlib
import signal
import subprocess
import tempfile
import unittest

from agent import Agent, Home, owner
from harness import DEADLINE, until


def can_trace():
    """Some machines let nobody watch another program."""
    return subprocess.run(["strace", "-f", "-qq", "-o", "/dev/null", "true"]).returncode == 0


class AgentTest(unittest.TestCase):
    def setUp(self):
        self.home = self.enterContext(Home())

    def start(self, *arguments, **options):
        return self.enterContext(Agent(self.home, *arguments, **options))

    def test_it_starts_and_ends_at_a_signal(self):
        for number in signal.SIGTERM, signal.SIGINT:
            status, _, err = self.start().is_found().end(number)
            self.assertEqual((status, err), (0, ""))
            self.assertIsNone(owner())

    def test_without_a_display_it_says_so_in_one_line(self):
        for display in "", ":4711", "nonsense":
            status, out, err = self.start(environment={"DISPLAY": display}).ended()
            self.assertEqual((status, out, err.count("\n")), (1, "", 1), err)
            self.assertIn("DISPLAY", err)

    def test_a_second_start_takes_the_place_of_an_idle_copy(self):
        first = self.start().is_found()
        second = self.start().is_found()
        self.assertEqual(first.ended()[0], 0)
        self.assertEqual(owner(), second.process.pid)

    def test_files_are_handed_to_the_copy_that_runs(self):
        first = self.start().is_found()
        movie = self.home.path / "a movie.mov"
        movie.write_bytes(b"")
        for arguments in ((movie,), (movie.as_uri(),), ("--open",)):
            self.assertEqual(self.start(*arguments).ended()[:1], (0,))
        self.assertIsNone(first.process.poll())
        self.assertEqual(owner(), first.process.pid)

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
            watched = self.start(watcher=("strace", "-f", "-qq", "-e", "trace=socket,connect", "-o", trace.name))
            until(owner, "agent")
            self.start().is_found()
            self.assertEqual(watched.ended()[0], 0)
            calls = trace.read()
        self.assertIn("AF_UNIX", calls)
        self.assertNotIn("AF_INET", calls)


if __name__ == "__main__":
    unittest.main()
