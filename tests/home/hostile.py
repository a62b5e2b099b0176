"""Strangers that send a set what nobody should, while a well-behaved peer wants its answers."""

import random
import threading
import time

import homecase
from homecase import PATIENCE
from lab.speaker import Peer, new_id

LARGEST = 65507  # what one datagram can carry
KINDS = ("probe", "probe_match", "resolve", "resolve_match", "hello", "bye", "heart_beat")
PARTS = ("Envelope", "Header", "SenderID", "MessageID", "ReplyTo", "From", "RelatesTo", "Body",
         "Criteria", "Device", "Type", "Name", "Model", "Location", "Services", "Service", "URL")


def messages(peer, target):
    """One of each kind."""
    return {kind: getattr(peer, kind)(target) if kind == "resolve" else getattr(peer, kind)()
            for kind in KINDS}


def without(text, part):
    begin, end = f"<{part}", f"</{part}>"
    before, found, rest = text.partition(begin)
    if not found:
        return None
    return before + (rest.partition(end)[2] if end in rest else rest.partition("/>")[2])


def element(text, part):
    """The first element of that name, as text; None when there is none."""
    begin = text.find(f"<{part}")
    if begin < 0:
        return None
    end = text.find(f"</{part}>", begin)
    end = end + len(part) + 3 if end >= 0 else text.find("/>", begin) + 2
    return text[begin:end]


def spoilt(text):
    """The message with each of its elements missing, doubled, empty, large, and with NUL bytes."""
    for part in PARTS:
        whole = element(text, part)
        if whole is None:
            continue
        large = "x" * (LARGEST - len(text) - len(part) * 2 - 8)
        yield text.replace(whole, "", 1)
        yield text.replace(whole, whole * 2, 1)
        yield text.replace(whole, f"<{part}/>", 1)
        yield text.replace(whole, f"<{part}></{part}>", 1)
        yield text.replace(whole, f"<{part}>{large}</{part}>"[:LARGEST], 1)[:LARGEST]
        yield text.replace(whole, f"<{part}>{large[:3000]}</{part}>", 1)
        yield text.replace(whole, f"<{part}>\0</{part}>", 1)
        yield text.replace(whole, f"<{part}>{whole}</{part}>", 1)
    for value in ("", "x" * 3000, "'\"[]", "a[b", "<", "&amp;&lt;", "\0", "]]>", "' or '1'='1"):
        yield text.replace("<Device ID='", f"<Device ID='{value}", 1)
        yield text.replace("<Device ID='", f"<Device x='{value}' ID='", 1)
    yield text.replace(" ID=", " Id=")
    for size in (1, 2, 7, len(text) // 2, len(text) - 1):
        yield text[:size]


def nested(depth):
    return "<a>" * depth + "</a>" * depth


class Hostile(homecase.OneSetCase):
    """After each test the set has answered all the while, has given back what it took, and ends."""

    interval = 1
    log = "off"

    def setUp(self):
        super().setUp()
        self.random = random.Random(7)
        self.peer = Peer(self.speaker.address, "MOBILE", "well-behaved")
        # A stranger's socket of its own, so that the answers of the good peer are not among his.
        self.stranger = self.speaker
        self.good = self.speaker_at(self.home, "phone2")
        self.good_peer = Peer(self.good.address)
        self.slowest = 0.0
        self.warm_up()
        self.before = self.resources()

    @classmethod
    def setUpClass(cls):
        cls.home = cls._home()
        cls.addClassCleanup(cls.home.down)
        cls.home.up(1, 2, start=False)

    def resources(self):
        process = self.tv.process
        return {"threads": process.status("Threads"), "descriptors": process.descriptors(),
                "memory": process.status("RssAnon")}

    def warm_up(self):
        """The tables at their bounds once, so that what comes later is only what is not given
        back."""
        for _ in range(200):
            self.stranger.send(Peer(self.stranger.address).heart_beat())
        for kind in messages(self.peer, self.id).values():
            self.stranger.send(kind)
        self.ask()

    def ask(self):
        """The well-behaved peer's question, in three copies as peers send it; up to three times, since
        among so many datagrams the kernel drops some."""
        begin = time.monotonic()
        for _ in range(3):
            if self.good.probe(self.good_peer, self.tv.address, 1 * PATIENCE, copies=3):
                self.slowest = max(self.slowest, time.monotonic() - begin)
                self.good.heard.clear()
                return
        self.fail("the set does not answer")

    def send_all(self, texts, pause_every=50):
        """All of them, with the good peer's question now and then. @return how many."""
        count = 0
        for count, text in enumerate(texts, 1):
            try:
                self.stranger.send(text, self.tv.address)
            except OSError:
                pass  # no room in the kernel at the moment: lost, as on any network
            if count % pause_every == 0:
                self.ask()
        self.ask()
        return count

    def rest(self):
        """Until the devices that were made up are dropped again and the tables are clean."""
        self.wait_until(lambda: self.tv.ask("/Zelv/Devices/RemoteTV/@ID", 30) == "" and
                        self.tv.ask("/Zelv/Devices/Mobile/@ID", 30) == "", 40,
                        "the made-up devices stay", 0.2)

    def check(self, memory_kib=4096):
        self.rest()
        self.ask()
        after = self.resources()
        print(f"\n  {self._testMethodName}: before {self.before}, after {after}, "
              f"slowest answer {self.slowest:.3f} s", flush=True)
        self.assertLessEqual(after["threads"], self.before["threads"] + 2)
        self.assertLessEqual(after["descriptors"], self.before["descriptors"] + 1)
        if PATIENCE == 1:  # the sanitizers keep what is freed
            self.assertLessEqual(after["memory"], self.before["memory"] + memory_kib)
        process = self.tv.process
        self.assertLess(self.home.end(self.tv), 5)
        self.assertEqual(0, process.exit_status, self.tv.read("log"))

    # What is done, for as long or as often as the short and the long form say

    def spoil_all(self, rounds=1):
        for _ in range(rounds):
            for kind in KINDS:
                stranger = Peer(self.stranger.address, self.random.choice(("TV", "MOBILE")))
                self.send_all(spoilt(messages(stranger, self.id)[kind]))
        self.check()

    def random_datagrams(self, seconds):
        """At full speed, from a thread beside the good peer's questions."""
        sizes = (0, 1, 40, 300, 1400, 4095, 4096, 9000)
        texts = [self.random.randbytes(self.random.choice(sizes)) for _ in range(1000)]
        end = threading.Event()
        sent = []
        flood = threading.Thread(target=self.flood, args=(texts, end, sent))
        flood.start()
        questions = 0
        try:
            deadline = time.monotonic() + seconds
            while time.monotonic() < deadline:
                self.ask()
                questions += 1
                time.sleep(0.05)
        finally:
            end.set()
            flood.join()
        print(f"\n  {sum(sent)} datagrams, {questions} questions answered meanwhile", flush=True)
        self.check()

    def flood(self, texts, end, sent):
        while not end.is_set():
            for text in texts:
                try:
                    self.stranger.send(text, self.tv.address)
                except OSError:
                    pass
            sent.append(len(texts))

    def invented_devices(self, count):
        self.send_all((Peer(self.stranger.address, identifier=new_id()).heart_beat()
                       for _ in range(count)), 1000)
        self.check()

    def deep_and_large(self):
        texts = [nested(depth) for depth in (10, 100, 128, 129, 500, 580, 9000)]
        texts += ["<a>" * 1300, "<" * 4000, "&" * 4000, "<a b='c' " + "d='e' " * 600 + "/>",
                  "<Envelope><Body>" + nested(200) + "</Body></Envelope>", "\0" * 4095,
                  "<!DOCTYPE a [" + "<!ENTITY b 'c'>" * 200 + "]><a/>", "x" * LARGEST,
                  "<Envelope>" + "\n" * 4000, "\xff\xfe" * 1000]
        self.send_all(texts * 20)
        self.check()

    def invented_sets(self, count):
        """Twice: the allocator keeps the room of the first time, the second must not take more."""
        first = self.before
        for _ in range(2):
            self.before = self.resources()
            self.send_all((Peer(self.stranger.address, self.random.choice(("TV", "MOBILE"))).hello()
                           for _ in range(count)), 100)
            self.rest()
        print(f"\n  at first {first}, after one round {self.before}", flush=True)
        self.check(memory_kib=1024)
