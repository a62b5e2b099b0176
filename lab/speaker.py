"""Speaks discovery byte by byte, from any node of a home, without a line of the library."""

import re
import select
import socket
import struct
import time
import uuid

from lab.alone import Visit

GROUP = "239.255.44.46"
PORT = 4451


def new_id():
    return str(uuid.uuid4())


class Heard:
    """One message as it came."""

    def __init__(self, text, source):
        self.text = text
        self.source = source
        self.when = time.monotonic()
        self.copies = 1
        kind = re.search(rb"<Body><(\w+)", text)
        self.kind = kind.group(1).decode() if kind else ""

    def header(self, name):
        found = re.search(rf"<{name}>(.*?)</{name}>".encode(), self.text)
        return found.group(1).decode() if found else None

    @property
    def device(self):
        found = re.search(rb"<Device ID='([^']*)'", self.text)
        return found.group(1).decode() if found else None


class Peer:
    """What a device says. `kind` is "TV" or "MOBILE", or any other text."""

    def __init__(self, address, kind="MOBILE", name="speaker", identifier=None):
        self.address = address
        self.kind = kind
        self.name = name
        self.id = identifier or new_id()

    def envelope(self, rest, body, message_id=None):
        return (f"<Envelope><Header><SenderID>{self.id}</SenderID>"
                f"<MessageID>{message_id or new_id()}</MessageID>{rest}</Header>"
                f"<Body>{body}</Body></Envelope>")

    def reply_to(self, url=None):
        return f"<ReplyTo>{url or f'udp://{self.address}:{PORT}'}</ReplyTo>"

    def origin(self, relates_to=None):
        relates = f"<RelatesTo>{relates_to}</RelatesTo>" if relates_to else ""
        return f"<From>{self.address}</From>{relates}"

    def device(self):
        location = "<Location>hall</Location>" if self.kind == "TV" else ""
        return (f"<Device ID='{self.id}'><Name>{self.name}</Name><Model>raw</Model>{location}"
                f"<Type>{self.kind}</Type><Services><Service><Name>DataControl</Name>"
                f"<URL>tcp://{self.address}:4446/</URL></Service></Services></Device>")

    def probe(self, wanted="ANY", url=None, message_id=None):
        return self.envelope(self.reply_to(url), "<Probe><Criteria><Device>"
                             f"<Type>{wanted}</Type></Device></Criteria></Probe>", message_id)

    def resolve(self, device, url=None, message_id=None):
        return self.envelope(self.reply_to(url), f"<Resolve><Device ID='{device}'/></Resolve>",
                             message_id)

    def hello(self, message_id=None):
        return self.envelope(self.origin(), f"<Hello>{self.device()}</Hello>", message_id)

    def probe_match(self, relates_to="nothing"):
        return self.envelope(self.origin(relates_to), f"<ProbeMatch>{self.device()}</ProbeMatch>")

    def resolve_match(self, relates_to="nothing"):
        return self.envelope(self.origin(relates_to),
                             f"<ResolveMatch>{self.device()}</ResolveMatch>")

    def heart_beat(self):
        return self.envelope(self.origin(), f"<HeartBeat><Device ID='{self.id}' /></HeartBeat>")

    def bye(self):
        return self.envelope(self.origin(), f"<Bye><Device ID='{self.id}' /></Bye>")


class Speaker:
    """A socket at a node that hears the group and what comes to the node's own address."""

    def __init__(self, node, network):
        self.address = node.address
        with Visit(network.namespace(node.name)):
            self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4 << 20)
        self.socket.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_LOOP, 0)
        here = socket.inet_aton(node.address)
        self.socket.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_IF, here)
        self.socket.bind(("0.0.0.0", PORT))
        self.socket.setsockopt(socket.IPPROTO_IP, socket.IP_ADD_MEMBERSHIP,
                               struct.pack("4s4s", socket.inet_aton(GROUP), here))
        self.heard = []

    def close(self):
        self.socket.close()

    def send(self, text, to=GROUP, copies=1):
        for _ in range(copies):
            self.socket.sendto(text if isinstance(text, bytes) else text.encode(), (to, PORT))

    def listen(self, seconds):
        """Takes in one datagram. @return whether one came."""
        if not select.select([self.socket], [], [], max(0.0, seconds))[0]:
            return False
        text, source = self.socket.recvfrom(70000)
        for message in self.heard[-64:]:
            if message.text == text and message.source[0] == source[0]:
                message.copies += 1
                return True
        self.heard.append(Heard(text, source))
        return True

    def listen_for(self, seconds):
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            self.listen(deadline - time.monotonic())

    def all(self, kind, since=0):
        return [message for message in self.heard[since:] if message.kind == kind]

    def wait_for(self, wanted, seconds=5, since=0):
        """@return the first message behind `since` for which wanted(message), or None."""
        deadline = time.monotonic() + seconds
        done = since
        while True:
            for message in self.heard[done:]:
                if wanted(message):
                    return message
            done = len(self.heard)
            left = deadline - time.monotonic()
            if left <= 0 or not self.listen(left):
                return None

    def probe(self, peer, to=GROUP, seconds=5, copies=1):
        """A well-behaved peer's question. @return the answer, or None."""
        question = new_id()
        since = len(self.heard)
        self.send(peer.probe(message_id=question), to, copies)
        return self.wait_for(lambda message: message.kind == "ProbeMatch" and
                             message.header("RelatesTo") == question, seconds, since)
