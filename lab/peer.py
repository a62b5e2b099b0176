"""A phone that is more than found: it takes messages over TCP and sends commands, input, and questions
about the tree of a set, byte by byte, without a line of the library."""

import re
import select
import socket
import struct
import threading
import time
from xml.sax.saxutils import escape

from lab.alone import Visit
from lab.speaker import GROUP, Heard, Peer, Speaker, new_id

DATA = 4446
COMMAND = 4448
INPUT = 4449
SECONDS = 10

QUOTES = {'"': "&quot;", "'": "&apos;"}
AT_ONCE = struct.pack("ii", 1, 0)  # SO_LINGER: the end of a connection is a reset


class Caller(Peer):
    """What a phone says beyond discovery."""

    services = (("DataControl", "tcp", DATA), ("CommandControl", "tcp", COMMAND),
                ("InputControl", "udp", INPUT))

    def url(self, port, protocol="tcp"):
        return f"{protocol}://{self.address}:{port}/"

    def device(self):
        services = "".join(f"<Service><Name>{name}</Name><URL>{self.url(port, protocol)}</URL></Service>"
                           for name, protocol, port in self.services)
        before, _, behind = super().device().partition("<Services>")
        return f"{before}<Services>{services}</Services>{behind.partition('</Services>')[2]}"

    # Remote data

    def _question(self, body, notify_to, message_id):
        rest = f"<From>{self.url(DATA)}</From>"
        if notify_to is not None:
            rest += f"<NotifyTo>{notify_to}</NotifyTo>"
        return self.envelope(rest, body, message_id)

    def request_data(self, path, transaction=None, notify_to=None):
        return self._question(f"<RequestData><TransactionId>{transaction or new_id()}</TransactionId>"
                              f"<XPath>{escape(path, QUOTES)}</XPath></RequestData>",
                              self.url(DATA) if notify_to is None else notify_to, None)

    def subscribe_data(self, path, subscription=None, notify_to=None):
        return self._question(f"<SubscribeData><SubscriptionId>{subscription or new_id()}"
                              f"</SubscriptionId><XPath>{escape(path, QUOTES)}</XPath></SubscribeData>",
                              self.url(DATA) if notify_to is None else notify_to, None)

    def unsubscribe_data(self, subscription):
        return self._question("<UnsubscribeData><SubscriptionId>"
                              f"{subscription}</SubscriptionId></UnsubscribeData>", None, None)

    def on_data(self, subscription, value):
        return self._question(f"<OnData><SubscriptionId>{subscription}</SubscriptionId>"
                              f"<Data>{value}</Data></OnData>", None, None)

    def set_data(self, path, value):
        return self.envelope("", f"<SetData><XPath>{escape(path, QUOTES)}</XPath>"
                             f"<Data>{value}</Data></SetData>")

    # Commands and input

    def command(self, text, message_id=None, reply_to=None):
        return (f"<Envelope><Header><MessageID>{message_id or new_id()}</MessageID>"
                f"<SenderID>{self.id}</SenderID>"
                f"<ReplyTo>{self.url(COMMAND) if reply_to is None else reply_to}</ReplyTo></Header>"
                f"<Body>{text}</Body></Envelope>")

    def command_return(self, text, relates_to, message_id=None):
        return (f"<Envelope><Header><MessageID>{message_id or new_id()}</MessageID>"
                f"<SenderID>{self.id}</SenderID><RelatesTo>{relates_to}</RelatesTo></Header>"
                f"<Body>{text}</Body></Envelope>")

    def on_input(self, kind, value, nickname="anna"):
        return (f"<OnInput><Type>{kind}</Type><Value>{value}</Value><DeviceGuid>{self.id}"
                f"</DeviceGuid><UserNickname>{nickname}</UserNickname></OnInput>")


class Service:
    """Takes messages over TCP, one a connection and one after the other, as a device does.

    `confirm(message)` may do otherwise than confirm it: what it returns is sent, None ends the
    connection with a reset, KEEP leaves it open without an answer, and it may take its time.
    """

    KEEP = object()

    def __init__(self, at, network, port):
        with Visit(network.namespace(at.name)):
            self.socket = socket.socket(socket.AF_INET, socket.SOCK_STREAM)
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        self.socket.bind(("0.0.0.0", port))
        self.socket.listen(512)
        self.port = self.socket.getsockname()[1]
        self.confirm = None
        self.accepted = 0
        self.taken = []
        self.kept = []
        self.news = threading.Condition()
        self._wake, self._woken = socket.socketpair()
        self._thread = threading.Thread(target=self._serve, daemon=True)
        self._thread.start()

    def close(self):
        """From now on nobody listens at the port."""
        if self._thread.is_alive():
            self._wake.send(b"x")
            self._thread.join()
        for each in (self.socket, self._wake, self._woken, *self.kept):
            each.close()

    def _serve(self):
        while self._woken not in select.select([self.socket, self._woken], [], [])[0]:
            connection, source = self.socket.accept()
            self.accepted += 1
            try:
                connection.settimeout(SECONDS)
                self._take(connection, source)
            except OSError:
                pass  # what the other does on purpose, or its end, ends with its connection
            if connection not in self.kept:
                connection.close()

    def _take(self, connection, source):
        text = whole_message(connection)
        if not text:
            return
        message = Heard(text, source)
        answer = self.confirm(message) if self.confirm else b"\n"
        if answer is None:
            connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, AT_ONCE)
        elif answer is self.KEEP:
            self.kept.append(connection)
        with self.news:
            self.taken.append(message)
            self.news.notify_all()
        if isinstance(answer, bytes):
            connection.sendall(answer)

    def wait_for(self, wanted, seconds=SECONDS, since=0):
        """@return the first message behind `since` for which wanted(message), or None."""
        deadline = time.monotonic() + seconds
        done = since
        with self.news:
            while True:
                for message in self.taken[done:]:
                    if wanted(message):
                        return message
                done = len(self.taken)
                if not self.news.wait(max(0.0, deadline - time.monotonic())):
                    return None

    def wait_for_count(self, count, seconds=SECONDS):
        with self.news:
            return self.news.wait_for(lambda: len(self.taken) >= count, seconds)

    def texts(self, since=0):
        with self.news:
            return [message.text for message in self.taken[since:]]


class Phone:
    """A device at a node: who it is, its services, and what it sends from there."""

    def __init__(self, node, network, kind="MOBILE", name="phone"):
        self.network = network
        self.node = node
        self.says = Caller(node.address, kind, name)
        self.id = self.says.id
        plenty_of_ports(node, network)
        self.speaker = Speaker(node, network)
        self.data = Service(node, network, DATA)
        self.commands = Service(node, network, COMMAND)

    def close(self):
        for each in (self.speaker, self.data, self.commands):
            each.close()

    @staticmethod
    def socket_at(network, node, kind=socket.SOCK_STREAM):
        with Visit(network.namespace(node.name)):
            return socket.socket(socket.AF_INET, kind)

    def socket(self, kind=socket.SOCK_STREAM):
        return self.socket_at(self.network, self.node, kind)

    def tell_group(self, text, copies=3):
        self.speaker.send(text, GROUP, copies)

    def tell(self, address, port, text, seconds=SECONDS):
        """One message over TCP. @return what came back: b"\\n" is the confirmation."""
        with self.socket() as connection:
            connection.settimeout(seconds)
            connection.connect((address, port))
            connection.sendall((text if isinstance(text, bytes) else text.encode()) + b"\n")
            return connection.recv(16)

    def drop(self, address, port, text):
        """One message over UDP, once."""
        with self.socket(socket.SOCK_DGRAM) as sender:
            sender.sendto((text if isinstance(text, bytes) else text.encode()) + b"\n",
                          (address, port))

    # The usual questions

    def read(self, address, path, seconds=SECONDS):
        """What the tree of a set has there; None when no answer comes."""
        transaction = new_id()
        since = len(self.data.taken)
        self.tell(address, DATA, self.says.request_data(path, transaction), seconds)
        answer = self.data.wait_for(lambda message: subscription_of(message) == transaction, seconds,
                                    since)
        return answer and value_of(answer)

    def watch(self, address, path):
        """@return the subscription's id. What it hears comes to `data`."""
        subscription = new_id()
        self.tell(address, DATA, self.says.subscribe_data(path, subscription))
        return subscription

    def values(self, subscription):
        with self.data.news:
            return [value_of(message) for message in self.data.taken
                    if subscription_of(message) == subscription]


def plenty_of_ports(node, network):
    """A connection for each message uses them up within seconds: those of a minute ago may be used
    again at once."""
    with Visit(network.namespace(node.name)):
        for name, value in (("tcp_tw_reuse", "1"), ("ip_local_port_range", "10000 65535")):
            with open("/proc/sys/net/ipv4/" + name, "w", encoding="ascii") as setting:
                setting.write(value)


def whole_message(connection):
    """Empty when it ends before the text does."""
    text = b""
    while not text.endswith(b"\n"):
        more = connection.recv(65536)
        if not more:
            return b""
        text += more
    return text


def between(text, tag):
    found = re.search(rf"<{tag}>(.*?)</{tag}>".encode(), text, re.DOTALL)
    return found.group(1).decode() if found else None


def subscription_of(message):
    return between(message.text, "SubscriptionId")


def value_of(message):
    found = re.search(rb"<Data>(.*)</Data>", message.text, re.DOTALL)
    return found.group(1).decode() if found else None
