"""What the tests of whole homes share. The programs are found by ZELV_BUILD."""

import os
import signal
import sys
import time
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.dont_write_bytecode = True
sys.path.insert(0, ROOT)
# pylint: disable=wrong-import-position
from lab import alone  # noqa: E402
from lab.household import Home  # noqa: E402
from lab.speaker import Speaker  # noqa: E402

SEPARATOR = "&#x13;"
# Checked programs are slower; upper bounds of time grow by this.
PATIENCE = float(os.environ.get("ZELV_PATIENCE", "1"))


def main():
    alone.enter()
    unittest.main(verbosity=2)


def ids(value):
    return set(value.split(SEPARATOR)) if value else set()


def leftovers(names):
    """Those of the namespaces and directories that are still there."""
    return [name for name in names
            if os.path.exists(name) or os.path.exists(os.path.join("/run/netns", name))]


def processes_with(text):
    """Those that live and were called with the text."""
    found = []
    for pid in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{pid}/cmdline", "rb") as line:
                words = line.read()
        except OSError:
            continue
        if text.encode() in words:
            found.append(int(pid))
    return found


class Subscription:
    """What a set tells one subscriber, read from its output."""

    def __init__(self, node, path):
        self.node = node
        since = len(node.lines())
        node.say("sub " + path)
        self.begin = f"data {node.wait_for('subscribed ', since).split(' ')[1]} {path} "
        node.wait_for(self.begin, since)

    def values(self):
        """All, the one at the beginning included."""
        return [line[len(self.begin):] for line in self.node.lines() if line.startswith(self.begin)]


class HomeCase(unittest.TestCase):
    """Has a home of its own, which is gone afterwards."""

    interval = 1
    log = "notable"

    @classmethod
    def _home(cls):
        home = Home("test")
        home.build = os.environ.get("ZELV_BUILD", home.build)
        home.interval = cls.interval
        home.log = cls.log
        return home

    def home_of(self, tvs, phones, wire=None, start=True):
        home = self._home()
        self.addCleanup(home.down)
        return home.up(tvs, phones, wire, start)

    def speaker_at(self, home, name):
        speaker = Speaker(home.node(name), home.network)
        self.addCleanup(speaker.close)
        return speaker

    def wait_until(self, condition, seconds=10, what="it does not come to pass", pause=0.02):
        """@return the seconds it took."""
        begin = time.monotonic()
        while not condition():
            if time.monotonic() - begin > seconds * PATIENCE:
                self.fail(what() if callable(what) else what)
            time.sleep(pause)
        return time.monotonic() - begin


class OneSetCase(HomeCase):
    """A set that starts for each test, as for the first time, and a phone's place, at which there is
    a speaker from before the set starts. They share the network, which takes a second to build."""

    @classmethod
    def setUpClass(cls):
        cls.home = cls._home()
        cls.addClassCleanup(cls.home.down)
        cls.home.up(1, 1, start=False)

    def setUp(self):
        self.tv = self.home.node("tv1")
        self.speaker = self.speaker_at(self.home, "phone1")
        self.home.start_sets()
        self.addCleanup(self.remove_set)
        self.id = self.tv.identifier()

    def remove_set(self):
        if self.tv.is_running():
            self.home.end(self.tv, signal.SIGKILL)
        self.tv.forget()
