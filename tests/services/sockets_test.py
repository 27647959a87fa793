"""What the services do on the network, seen from outside: which sockets are opened, by whom, and what leaves."""
import http.server
import json
import os
import pathlib
import re
import subprocess
import tempfile
import threading
import unittest

BUILD = pathlib.Path(os.environ["KELDRA_BUILD"])
PROBE = str(BUILD / "keldra_services_probe")
KELDRA = str(BUILD / "keldra")
# Less than the minute that a request may take.
DEADLINE = 40
FINISHED = "newer version: none\n"


def run(*command):
    # A leak check, where one is built in, watches the program by the same means as strace does, and gives up.
    return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=DEADLINE,
                          env={**os.environ, "ASAN_OPTIONS": "detect_leaks=0"})


def traced(*command):
    """Runs a program; its end, and the internet addresses it made sockets for or connected to."""
    with tempfile.NamedTemporaryFile("r") as trace:
        done = run("strace", "-f", "-qq", "-e", "trace=socket,connect,sendto,sendmsg", "-o", trace.name, *command)
        calls = [line for line in trace if "AF_INET" in line]
    return done, calls


def can_trace():
    """Some machines let nobody watch another program."""
    return run("strace", "-f", "-qq", "-o", "/dev/null", "true").returncode == 0


needs_tracing = unittest.skipUnless(can_trace(), "this machine allows no tracing")


class Server:
    """A web server that keeps what it is sent."""

    def __enter__(self):
        self.received = received = []

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_POST(self):
                received.append((self.path, self.rfile.read(int(self.headers["Content-Length"]))))
                self.send_response(200)
                self.end_headers()

            def do_GET(self):
                received.append((self.path, None))
                self.send_error(404)

            def log_message(self, *_):
                pass

        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.port = self._server.server_port
        self.url = f"http://127.0.0.1:{self.port}"
        threading.Thread(target=self._server.serve_forever, daemon=True).start()
        return self

    def __exit__(self, *_):
        self._server.shutdown()
        self._server.server_close()


class SocketsTest(unittest.TestCase):
    def assertSilent(self, done, stdout=FINISHED):
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, stdout, ""))

    @needs_tracing
    def test_only_the_hosts_that_may_be_asked_are_reached(self):
        for consent, has_update_host in ((True, False), (True, True), (False, False), (False, True)):
            with self.subTest(consent=consent, has_update_host=has_update_host), Server() as analytics, Server() as update:
                options = ["--consent"] * consent + ["--update-host", update.url] * has_update_host
                done, calls = traced(PROBE, "--analytics-host", analytics.url, *options)
                self.assertSilent(done)
                wanted = [analytics.port] * consent + [update.port] * has_update_host
                self.assertEqual(set(re.findall(r"htons\((\d+)\)", " ".join(calls))), set(map(str, wanted)))
                self.assertEqual([(path, len(json.loads(body))) for path, body in analytics.received],
                                 [("/api/v0/events", 5)] * consent)
                self.assertEqual(update.received, [("/apps/keldra/version.json", None)] * has_update_host)
        done, calls = traced(PROBE, "--consent")
        self.assertSilent(done)
        self.assertEqual(calls, [], "no host, no socket")

    @needs_tracing
    def test_the_shown_payload_is_what_is_sent(self):
        done, calls = traced(KELDRA, "telemetry", "--show")
        self.assertEqual((done.returncode, calls), (0, []))
        with Server() as server:
            self.assertSilent(run(PROBE, "--consent", "--analytics-host", server.url))
            sent = server.received[0][1]

        def without_the_moment(body):
            for name in "sessionId", "timestamp", "appVersion", "appBuildNumber":
                body = re.sub(f'"{name}":"[^"]+"', f'"{name}":"..."', body)
            return body

        self.assertEqual(without_the_moment(done.stdout.removesuffix("\n")), without_the_moment(sent.decode()))


if __name__ == "__main__":
    unittest.main()
