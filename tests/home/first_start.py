"""Ends a set at random moments of its first start, and looks at what it comes back as."""

import os
import random
import signal
import statistics
import time
import uuid
import xml.etree.ElementTree as xml

import homecase
from homecase import PATIENCE

# The lot of a run is printed, and given again by this it ends sets at the same moments.
SEED = int(os.environ.get("ZELV_SEED", "0")) or random.SystemRandom().randrange(1, 2 ** 31)


def written(text):
    """The text, if it is an identifier as sets write it."""
    try:
        return text if text == str(uuid.UUID(text)) else None
    except ValueError:
        return None


class FirstStart(homecase.HomeCase):
    interval = 10

    def setUp(self):
        self.home = self.home_of(1, 0, start=False)
        self.tv = self.home.node("tv1")
        self.random = random.Random(SEED)
        self.found = {}

    @property
    def file(self):
        return os.path.join(self.tv.path("state"), "Devices.xml")

    def identity_in_file(self):
        """None where there is none, or no file, or no document yet."""
        try:
            local = xml.parse(self.file).getroot().findall("LocalTV")
        except (OSError, xml.ParseError):
            return None
        return written(local[0].get("ID", "")) if len(local) == 1 else None

    def state(self):
        """What an interrupted start has left; a name for the report."""
        if self.printed():
            return "ready"
        if self.identity_in_file():
            return "identity saved"
        if not os.path.exists(self.tv.path("state")):
            return "no directory"
        if not os.path.exists(self.file):
            return "no Devices.xml"
        return "no identity" if os.path.getsize(self.file) else "Devices.xml empty"

    def printed(self):
        """The identity that the set has told, in a whole line."""
        told = [line.split(" ")[1] for line in self.tv.lines() if line.startswith("ready ")]
        return told[0] if told else None

    def start(self):
        """@return the moment."""
        self.tv.start(self.home.command_of(self.tv))
        return time.monotonic()

    def kill(self, with_children):
        """With the lines of the shell that it runs, as when the plug is pulled, or without."""
        process = self.tv.process
        self.assertTrue(process.is_alive(), self.tv.read("log"))
        (os.killpg if with_children else os.kill)(process.pid, signal.SIGKILL)
        self.assertTrue(process.wait(10))
        self.tv.process = None

    def start_time(self):
        """From the start on an empty directory to the line that says that the set is ready."""
        times = []
        for _ in range(5):
            begin = self.start()
            self.tv.wait_for("ready ")
            times.append(time.monotonic() - begin)
            self.kill(with_children=True)
            self.tv.forget()
        return statistics.median(times)

    def interrupted_at(self, moments, with_children=True):
        longest = 1.1 * self.start_time()
        for number in range(moments):
            moment = self.random.uniform(0, longest)
            with self.subTest(seed=SEED, number=number, milliseconds=round(moment * 1000, 2)):
                self.interrupt(moment, with_children)
            if self.tv.is_running():
                self.kill(with_children=True)
            self.tv.forget()
        found = ", ".join(f"{name} {count}" for name, count in sorted(self.found.items()))
        print(f"\n  {moments} moments within {longest * 1000:.0f} ms, seed {SEED}: {found}",
              flush=True)

    def interrupt(self, moment, with_children):
        begin = self.start()
        time.sleep(max(0.0, begin + moment - time.monotonic()))
        self.kill(with_children)
        state = self.state()
        self.found[state] = self.found.get(state, 0) + 1
        identity = self.printed() or self.identity_in_file()
        for _ in range(3):
            identity = self.start_again(identity)

    def start_again(self, before):
        """@return who it is; never another than it was."""
        self.start()
        told = self.tv.wait_for("ready ", seconds=30 * PATIENCE).split(" ")[1]
        self.kill(with_children=True)
        self.assertEqual(written(told), told)
        self.assertEqual(self.identity_in_file(), told, "what it tells is on the storage")
        if before:
            self.assertEqual(told, before, "one identity for ever")
        self.check_file()
        return told

    def check_file(self):
        """Whole: all that a start needs stands in it, once."""
        root = xml.parse(self.file).getroot()
        self.assertEqual(root.tag, "Devices")
        interface = "LocalTV/Interfaces/NetworkInterface[@ID='1']/"
        for path in ("MulticastGroup", "MulticastPort", "HeartBeatInterval", "LocalTV",
                     "LocalTV/Name", "LocalTV/Model", "LocalTV/Location", interface + "MACAddress",
                     interface + "IPv4/Address"):
            self.assertEqual(len(root.findall(path)), 1, path)
        self.assertEqual(root.findtext(interface + "IPv4/Address"), self.tv.address)
