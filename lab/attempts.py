"""Counts who knocks at a port of a node, also where nobody listens."""

import ctypes
import select
import socket
import struct
import threading

from lab.alone import Visit

ETH_P_IP = 0x0800
SO_ATTACH_FILTER = 26
SO_RCVBUFFORCE = 33
ROOM = 64 << 20  # for some ten thousand that come faster than they are counted


def program(port):
    """Lets through the first packet of each connection to the port; as the kernel reads it."""
    steps = [(0x30, 0, 0, 9), (0x15, 0, 6, 6),  # TCP
             (0x30, 0, 0, 33), (0x54, 0, 0, 0x12), (0x15, 0, 3, 0x02),  # SYN without ACK
             (0x28, 0, 0, 22), (0x15, 0, 1, port), (0x06, 0, 0, 64), (0x06, 0, 0, 0)]
    return b"".join(struct.pack("HBBI", *step) for step in steps), len(steps)


class Attempts:
    """Those since it was made."""

    def __init__(self, node, network, port):
        with Visit(network.namespace(node.name)):
            self.socket = socket.socket(socket.AF_PACKET, socket.SOCK_DGRAM, 0)
        code, length = program(port)
        self._code = ctypes.create_string_buffer(code)
        self.socket.setsockopt(socket.SOL_SOCKET, SO_ATTACH_FILTER,
                               struct.pack("HL", length, ctypes.addressof(self._code)))
        try:
            self.socket.setsockopt(socket.SOL_SOCKET, SO_RCVBUFFORCE, ROOM)
        except PermissionError:
            pass  # there is room for a few hundred
        self.socket.bind(("eth0", ETH_P_IP))
        self.count = 0
        self._last = {}
        self._ending = threading.Event()
        self._thread = threading.Thread(target=self._listen, daemon=True)
        self._thread.start()

    def close(self):
        self._ending.set()
        self._thread.join()
        self.socket.close()

    def _listen(self):
        while not self._ending.is_set():
            if select.select([self.socket], [], [], 0.1)[0]:
                packet, source = self.socket.recvfrom(64)
                if source[2] == socket.PACKET_HOST:
                    self._note(packet)

    def _note(self, packet):
        """A kernel that got no good answer sends the same packet once more: that is no attempt."""
        port, sequence = packet[20:22], packet[24:28]
        if self._last.get(port) != sequence:
            self._last[port] = sequence
            self.count += 1
