"""What the services do on the network, seen from outside: which sockets are opened, by whom, and what leaves."""
import http.server
import json
import os
import pathlib
import re
import socket
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
    return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=DEADLINE)


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


class Fountain:
    """A server whose answers never end."""

    def __init__(self, head):
        self._head = head
        self.visits = 0
        self._isOver = False

    def __enter__(self):
        self._listener = socket.create_server(("127.0.0.1", 0))
        self.url = f"http://127.0.0.1:{self._listener.getsockname()[1]}"
        self._thread = threading.Thread(target=self._pour)
        self._thread.start()
        return self

    def _pour(self):
        # One at a time: the next answer begins when the one before was hung up on.
        while not self._isOver:
            connection, _ = self._listener.accept()
            with connection:
                try:
                    if not connection.recv(1 << 16):
                        continue
                    self.visits += 1
                    connection.sendall(self._head)
                    while True:
                        connection.sendall(bytes(1 << 16))
                except OSError:
                    pass

    def __exit__(self, *_):
        self._isOver = True
        socket.create_connection(self._listener.getsockname()).close()
        self._thread.join(DEADLINE)
        self._listener.close()


class SocketsTest(unittest.TestCase):
    def assertSilent(self, done, stdout=FINISHED):
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, stdout, ""))

    @needs_tracing
    def test_with_consent_only_the_analytics_host_is_reached(self):
        with Server() as server:
            done, calls = traced(PROBE, "--consent", "--analytics-host", server.url)
            self.assertSilent(done)
            ports = set(re.findall(r"htons\((\d+)\)", " ".join(calls)))
            self.assertEqual(ports, {str(server.port)}, "this is what the other tests would see")
            self.assertEqual([path for path, _ in server.received], ["/api/v0/events"])
            self.assertEqual(len(json.loads(server.received[0][1])), 5)

    @needs_tracing
    def test_without_consent_no_internet_socket_is_made(self):
        with Server() as server:
            done, calls = traced(PROBE, "--analytics-host", server.url)
            self.assertSilent(done)
            self.assertEqual((calls, server.received), ([], []))

    @needs_tracing
    def test_without_consent_the_update_check_reaches_its_own_host_only(self):
        with Server() as analytics, Server() as update:
            done, calls = traced(PROBE, "--analytics-host", analytics.url, "--update-host", update.url)
            self.assertSilent(done)
            self.assertEqual(set(re.findall(r"htons\((\d+)\)", " ".join(calls))), {str(update.port)})
            self.assertEqual((analytics.received, update.received), ([], [("/apps/keldra/version.json", None)]))

    @needs_tracing
    def test_without_hosts_no_internet_socket_is_made(self):
        done, calls = traced(PROBE, "--consent")
        self.assertSilent(done)
        self.assertEqual(calls, [])

    def test_without_a_network_nobody_notices(self):
        alone = ["unshare", "--map-root-user", "--net"]
        if run(*alone, "true").returncode != 0:
            self.skipTest("this machine allows no network namespaces")
        for host in "http://127.0.0.1:9", "http://[2001:db8::1]", "https://keldra.invalid":
            with self.subTest(host=host):
                done = run(*alone, PROBE, "--consent", "--analytics-host", host, "--update-host", host)
                self.assertEqual((done.returncode, done.stderr), (0, ""))
                lines = done.stdout.splitlines()
                self.assertEqual(lines.pop() + "\n", FINISHED)
                # The log keeps the batch's failures, one line for each flush.
                self.assertLessEqual(len(lines), 2)
                for line in lines:
                    self.assertRegex(line, r"^\[KELDRA Analytics\] Aptabase: Failed to send 5 events\. Reason: ")
        done = run(*alone, KELDRA, "telemetry", "--show")
        self.assertEqual((done.returncode, len(json.loads(done.stdout))), (0, 5))

    def test_an_endless_answer_is_hung_up_on(self):
        for head in b"HTTP/1.1 200 OK\r\n\r\n", b"HTTP/1.1 500 Busy\r\n\r\n":
            with self.subTest(head=head), Fountain(head) as fountain:
                done = run(PROBE, "--consent", "--analytics-host", fountain.url, "--update-host", fountain.url)
                self.assertEqual((done.returncode, done.stderr), (0, ""))
                self.assertGreaterEqual(fountain.visits, 2, "asked for both")

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
