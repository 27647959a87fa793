"""A mouse for a Wayland desktop that allows virtual ones (wlroots' protocol for them), without any library."""
import os
import socket
import struct
import time

LEFT_BUTTON = 0x110
RELEASED, PRESSED = 0, 1
DISPLAY, REGISTRY, SYNC, MANAGER, POINTER = range(1, 6)


def _text(words):
    data = words.encode() + b"\0"
    return struct.pack("=I", len(data)) + data + bytes(-len(data) % 4)


class Mouse:
    """Plugged in while the context lasts. Places are pixels of a desktop of that size, from the top left."""

    def __init__(self, width, height):
        self._size = (width, height)
        self._socket = socket.socket(socket.AF_UNIX)
        self._next_callback = POINTER
        self._received = b""

    def __enter__(self):
        self._socket.connect(os.path.join(os.environ["XDG_RUNTIME_DIR"], os.environ["WAYLAND_DISPLAY"]))
        self._send(DISPLAY, 1, struct.pack("=I", REGISTRY))
        globals_ = {}
        for sender, operation, body in self._until_done():
            if sender == REGISTRY and operation == 0:
                name, length = struct.unpack_from("=II", body)
                globals_[body[8:8 + length - 1].decode()] = name
        manager = "zwlr_virtual_pointer_manager_v1"
        self._send(REGISTRY, 0, struct.pack("=I", globals_[manager]) + _text(manager) + struct.pack("=II", 1, MANAGER))
        self._send(MANAGER, 0, struct.pack("=II", 0, POINTER))
        self._until_done()
        return self

    def __exit__(self, *_):
        self._socket.close()

    def move(self, x, y):
        self._send(POINTER, 1, struct.pack("=IIIII", self._now(), int(x), int(y), *self._size))
        self._frame()

    def press(self, state=PRESSED):
        self._send(POINTER, 2, struct.pack("=III", self._now(), LEFT_BUTTON, state))
        self._frame()

    def click(self, x, y):
        self.move(x, y)
        self.press()
        self.press(RELEASED)

    def _frame(self):
        self._send(POINTER, 4, b"")
        self._until_done()

    @staticmethod
    def _now():
        return int(time.monotonic() * 1000) & 0xffffffff

    def _send(self, receiver, operation, body):
        self._socket.sendall(struct.pack("=II", receiver, (8 + len(body)) << 16 | operation) + body)

    def _until_done(self):
        """Everything that the compositor says until it has done what it was asked for."""
        # The identifiers of callbacks that were called are free again, so that one serves for all.
        self._send(DISPLAY, 0, struct.pack("=I", SYNC))
        said = []
        while True:
            while len(self._received) < 8 or len(self._received) < struct.unpack_from("=I", self._received, 4)[0] >> 16:
                more = self._socket.recv(65536)
                if not more:
                    raise AssertionError("the compositor hung up")
                self._received += more
            sender, sized = struct.unpack_from("=II", self._received)
            body, self._received = self._received[8:sized >> 16], self._received[sized >> 16:]
            if sender == DISPLAY and sized & 0xffff == 0:
                raise AssertionError(f"the compositor complains: {body!r}")
            said.append((sender, sized & 0xffff, body))
            if sender == DISPLAY and struct.unpack("=I", body)[0] == SYNC:
                return said
