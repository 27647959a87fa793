"""A desktop session that ends: the other side of the X session management protocol, by libSM."""
import collections
import ctypes
import select
import threading

from harness import until

ICE = ctypes.CDLL("libICE.so.6")
SM = ctypes.CDLL("libSM.so.6")
Pointer = ctypes.c_void_p
for call in (ICE.IceComposeNetworkIdList, ICE.IceAcceptConnection, SM.SmsGenerateClientID, SM.SmsGetIceConnection):
    call.restype = Pointer

ToRegister = ctypes.CFUNCTYPE(ctypes.c_int, Pointer, Pointer, Pointer)
ToBeTold = ctypes.CFUNCTYPE(None, Pointer, Pointer, Pointer, Pointer)
ToConnect = ctypes.CFUNCTYPE(ctypes.c_int, Pointer, Pointer, ctypes.POINTER(ctypes.c_ulong),
                             ctypes.POINTER(Pointer * 20), Pointer)
ToFail = ctypes.CFUNCTYPE(None, Pointer)
ToTrust = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_char_p)
# Else it ends this process when a program ends.
on_failure = ToFail(lambda connection: None)
ICE.IceSetIOErrorHandler(on_failure)
# What clients may say, in the order of the library's structure of callbacks.
WORDS = ("register", "interact request", "interact done", "save request", "phase 2 request", "saved", "close",
         "set properties", "delete properties", "get properties")
SAVE_LOCAL, SAVE_BOTH, INTERACT_NONE, INTERACT_ANY = 1, 2, 0, 2


class Session:
    """Programs started with `environment` belong to it while the context lasts. They wait for its answers, so it lives in a thread,
    the only one that calls the libraries. One in a process: they keep the first one's callbacks for good."""

    def __init__(self):
        self.said = []
        self._client = None
        self._connections = []
        self._wishes = collections.deque()
        self._is_over = False
        self._told = [ToRegister(self._register)] + [
            ToBeTold(lambda client, data, a, b, word=word: self.said.append(word)) for word in WORDS[1:]]
        self._connect, self._trust = ToConnect(self._connected), ToTrust(lambda host: 1)
        error = ctypes.create_string_buffer(256)
        count, self._list = ctypes.c_int(), ctypes.POINTER(Pointer)()
        if not SM.SmsInitialize(b"test", b"1", self._connect, None, self._trust, len(error), error) or \
                not ICE.IceListenForConnections(ctypes.byref(count), ctypes.byref(self._list), len(error), error):
            raise AssertionError(error.value.decode())
        self._listening = [Pointer(self._list[index]) for index in range(count.value)]
        for each in self._listening:
            ICE.IceSetHostBasedAuthProc(each, self._trust)
        ids = Pointer(ICE.IceComposeNetworkIdList(count, self._list))
        self.environment = {"SESSION_MANAGER": ctypes.cast(ids, ctypes.c_char_p).value.decode()}

    def _connected(self, client, data, mask, callbacks, reason):
        mask[0] = (1 << len(WORDS)) - 1
        for index, told in enumerate(self._told):
            callbacks[0][2 * index] = ctypes.cast(told, Pointer).value
        return 1

    def _register(self, client, data, previous):
        self._client = Pointer(client)
        SM.SmsRegisterClientReply(self._client, Pointer(SM.SmsGenerateClientID(self._client)))
        # As the protocol wants it after each registration.
        SM.SmsSaveYourself(self._client, SAVE_LOCAL, 0, INTERACT_NONE, 0)
        return 1

    def _live(self):
        while not self._is_over:
            while self._wishes:
                self._wishes.popleft()()
            sources = {ICE.IceGetListenConnectionNumber(each): each for each in self._listening}
            sources.update({ICE.IceConnectionNumber(each): each for each in self._connections})
            for number in select.select(list(sources), [], [], 0.05)[0]:
                source = sources[number]
                if source in self._listening:
                    self._connections.append(Pointer(ICE.IceAcceptConnection(source, ctypes.byref(ctypes.c_int()))))
                elif ICE.IceProcessMessages(source, None, None) != 0:
                    self._connections.remove(source)

    def __enter__(self):
        self._thread = threading.Thread(target=self._live)
        self._thread.start()
        return self

    def __exit__(self, *_):
        self._is_over = True
        self._thread.join()
        ICE.IceFreeListenObjs(len(self._listening), self._list)

    def hears(self, word, times=1):
        until(lambda: self.said.count(word) >= times, f"\"{word}\" from the program")

    def log_out(self):
        """Asks the one program to save what it has, and then to die."""
        saved = self.said.count("saved")
        self._wishes.append(lambda: SM.SmsSaveYourself(self._client, SAVE_BOTH, 1, INTERACT_ANY, 0))
        self.hears("saved", saved + 1)
        self._wishes.append(lambda: SM.SmsDie(self._client))
