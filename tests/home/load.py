"""Local reads of a set while a phone reads, watches and writes at full speed over eight
connections."""

import multiprocessing
import os
import socket
import subprocess
import sys
import threading
import time

import homecase
from homecase import PATIENCE
from lab import alone
from lab.peer import (DATA, Caller, Service, plenty_of_ports, subscription_of, value_of,
                      whole_message)
from lab.speaker import Speaker, new_id
from phonecase import MOBILE, NAME

LOCATION = "/Zelv/Devices/LocalTV/Location/text()"
MOST = 3  # times as long at the 99th percentile
CONNECTIONS = (["read"] * 3) + (["watch"] * 3) + (["write"] * 2)


def divided(processors):
    """@return those for the set, and those for the phone."""
    each = sorted(processors)
    return (set(each[:1]), set(each[1:])) if len(each) > 1 else (set(each), set(each))


class Prompt:
    """A set at the other end of two pipes, so that nothing has to look again and again whether an
    answer has come."""

    def __init__(self, home, node):
        os.makedirs(node.directory, exist_ok=True)
        # The phone's processor is another one, as that of another device is.
        own, self.others = divided(os.sched_getaffinity(0))
        os.sched_setaffinity(0, own)
        self.child = subprocess.Popen(node.at + home.command_of(node), stdin=subprocess.PIPE,
                                      stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, bufsize=0)
        self.unread = b""
        self.line_with(b"ready ")

    def line(self):
        while b"\n" not in self.unread:
            more = os.read(self.child.stdout.fileno(), 65536)
            if not more:
                raise RuntimeError("the set has ended")
            self.unread += more
        line, _, self.unread = self.unread.partition(b"\n")
        return line

    def line_with(self, begin):
        while True:
            line = self.line()
            if line.startswith(begin):
                return line

    def value(self, path):
        self.child.stdin.write(b"get " + path.encode() + b"\n")
        identifier = self.line_with(b"queued ").split(b" ")[1]
        begin = b"data " + identifier + b" " + path.encode() + b" "
        return self.line_with(begin)[len(begin):].decode()

    def read(self, path):
        """@return the seconds until the value is printed."""
        begin = time.perf_counter()
        self.value(path)
        return time.perf_counter() - begin

    def end(self):
        self.child.stdin.close()
        self.child.stdout.close()
        if self.child.poll() is None:
            self.child.terminate()
        return self.child.wait(10)


class PhoneAtWork:
    """In a process of its own. `counts` are the exchanges done by each connection."""

    def __init__(self, node, network, tv, processors):
        self.processors = processors
        self.counts = multiprocessing.Array("q", len(CONNECTIONS), lock=False)
        self.unanswered = multiprocessing.Value("q", 0)
        self.beginning = multiprocessing.Event()
        self.ending = multiprocessing.Event()
        context = multiprocessing.get_context("fork")
        self.process = context.Process(target=self._work, args=(node, network, tv), daemon=True)
        self.process.start()

    def end(self):
        self.ending.set()
        self.process.join(30)
        return self.process.exitcode

    # In the other process

    def _work(self, node, network, tv):
        os.sched_setaffinity(0, self.processors)
        sys.setswitchinterval(1e-4)  # or its threads wait for each other, and not for the set
        self.tv = tv
        self.network = network
        self.node = node
        self.says = Caller(node.address, "MOBILE", "at work")
        self.waiting = {}
        self.watched = {}
        plenty_of_ports(node, network)
        self.service = Service(node, network, DATA)
        self.service.confirm = self._take
        speaker = Speaker(node, network)
        speaker.send(self.says.hello(), copies=3)
        self.beginning.wait()
        threads = [threading.Thread(target=self._connection, args=(number, kind))
                   for number, kind in enumerate(CONNECTIONS)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        speaker.send(self.says.bye(), copies=3)
        speaker.close()
        self.service.close()

    def _take(self, message):
        identifier = subscription_of(message)
        waiting = (self.waiting.get(identifier) or
                   self.waiting.get((identifier, value_of(message))))
        if waiting:
            waiting.set()
        self.service.taken.clear()
        return b"\n"

    def _connection(self, number, kind):
        with alone.Visit(self.network.namespace(self.node.name)):  # for good, of this thread
            while not self.ending.is_set():
                getattr(self, "_" + kind)(number)
                self.counts[number] += 1

    def _tell(self, text):
        with socket.socket() as connection:
            connection.settimeout(10)
            connection.connect((self.tv, DATA))
            connection.sendall(text.encode() + b"\n")
            whole_message(connection)

    def _ask(self, key, text):
        """The text, and then what it brings: an answer, or a change that somebody watches."""
        self.waiting[key] = threading.Event()
        self._tell(text)
        if not self.waiting[key].wait(10):
            self.unanswered.value += 1
        del self.waiting[key]

    def _read(self, _):
        identifier = new_id()
        self._ask(identifier, self.says.request_data(NAME, identifier))

    def _watch(self, _):
        identifier = new_id()
        self._ask(identifier, self.says.subscribe_data(NAME, identifier))
        self._tell(self.says.unsubscribe_data(identifier))

    def _write(self, number):
        if number not in self.watched:
            self.watched[number] = new_id()
            self._tell(self.says.subscribe_data(LOCATION, self.watched[number]))
        value = f"room {number} {self.counts[number]}"
        self._ask((self.watched[number], value), self.says.set_data(LOCATION, value))


def percentile(seconds, part):
    ordered = sorted(seconds)
    return ordered[min(len(ordered) - 1, int(len(ordered) * part))]


class Load(homecase.HomeCase):
    interval = 60
    log = "off"

    def setUp(self):
        self.home = self.home_of(1, 1, start=False)
        self.tv = self.home.node("tv1")
        self.set = Prompt(self.home, self.tv)
        self.addCleanup(self.set.end)

    def reads(self, seconds):
        times = []
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            times.append(self.set.read(NAME))
        return times

    def round(self, seconds):
        """@return the times of reads without and with the phone, and what it did in a second."""
        before = self.reads(seconds)
        phone = PhoneAtWork(self.home.node("phone1"), self.home.network, self.tv.address,
                            self.set.others)
        # Whom the set does not know yet is swept with the next change of its list.
        self.wait_until(lambda: self.set.value(MOBILE), what="the phone is not found")
        phone.beginning.set()
        time.sleep(0.5)
        counts = list(phone.counts)
        under = self.reads(seconds)
        done = [now - then for now, then in zip(phone.counts, counts)]
        status = phone.end()
        rates = {kind: sum(count for each, count in zip(CONNECTIONS, done) if each == kind) / seconds
                 for kind in ("read", "watch", "write")}
        print(f"\n  p50 {percentile(before, .5) * 1e6:.0f} and {percentile(under, .5) * 1e6:.0f} µs, "
              f"p99 {percentile(before, .99) * 1e6:.0f} and {percentile(under, .99) * 1e6:.0f} µs; "
              f"a second: {rates['read']:.0f} reads, {rates['watch']:.0f} subscriptions, "
              f"{rates['write']:.0f} writes", flush=True)
        for kind, count in zip(CONNECTIONS, done):
            self.assertGreater(count, 0, kind)
        self.assertEqual(0, status)
        self.assertEqual(0, phone.unanswered.value)
        return before, under, rates

    def measure(self, rounds, seconds):
        before, under = [], []
        for _ in range(rounds):
            each_before, each_under, _ = self.round(seconds)
            before.append(percentile(each_before, .99))
            under.append(percentile(each_under, .99))
        ratio = percentile([loaded / idle for idle, loaded in zip(before, under)], .5)
        print(f"\n  p99 of local reads, medians of {rounds} rounds: alone "
              f"{percentile(before, .5) * 1e6:.0f} µs, beside the phone "
              f"{percentile(under, .5) * 1e6:.0f} µs; {ratio:.2f} times, of at most {MOST}", flush=True)
        self.ends_in_order()
        self.assertLessEqual(ratio, MOST)

    def ends_in_order(self):
        self.assertEqual(0, self.set.end())

    def everybody_is_answered(self, seconds):
        _, under, _ = self.round(seconds)
        self.assertLess(max(under), 1 * PATIENCE)
        self.ends_in_order()
