#!/usr/bin/env python3
"""What standing by costs a set with 40 peers: processor time and memory over 60 s.

The peers are heard as 40 sets are: each with its own ID, a Hello, and three copies of a heartbeat each
interval, spread over it. They are spoken by one raw socket, so that only the set is measured.

usage: ZELV_BUILD=build-release tests/long/standby.py    INTERVAL in the environment, else 10 and 1
"""

import os
import sys
import time

sys.path[0] = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "home")
# pylint: disable=wrong-import-position
import homecase  # noqa: E402
from lab.speaker import Peer  # noqa: E402

PEERS = 40
SECONDS = 60


class Standby(homecase.HomeCase):
    log = "warning"

    def measure(self, interval):
        type(self).interval = interval
        home = self.home_of(1, 1)
        tv = home.node("tv1")
        speaker = self.speaker_at(home, "phone1")
        alone = self.memory(tv)
        peers = [Peer(speaker.address, "TV", f"set {number}") for number in range(PEERS)]
        for peer in peers:
            speaker.send(peer.hello(), copies=3)
        self.beat(speaker, peers, 2 * interval)
        self.assertEqual(PEERS, len(homecase.ids(tv.ask("/Zelv/Devices/RemoteTV/@ID"))))
        before = tv.process.processor_nanoseconds()
        self.beat(speaker, peers, SECONDS)
        spent = (tv.process.processor_nanoseconds() - before) / 1e6
        self.assertEqual(PEERS, len(homecase.ids(tv.ask("/Zelv/Devices/RemoteTV/@ID"))))
        print(f"\n  heartbeat {interval} s, {PEERS} peers, {SECONDS} s: {spent:.1f} ms of processor time "
              f"({spent / SECONDS / 10:.3f} %); memory alone {alone}, now {self.memory(tv)}", flush=True)

    def memory(self, tv):
        return ", ".join(f"{name} {tv.process.status(name)} KiB" for name in ("VmRSS", "RssAnon"))

    def beat(self, speaker, peers, seconds):
        """Each in its turn; the next round begins an interval after this one."""
        begin = time.monotonic()
        turns = int(seconds / self.interval * len(peers))
        for turn in range(turns):
            wait = begin + turn * self.interval / len(peers) - time.monotonic()
            speaker.listen_for(wait)
            speaker.send(peers[turn % len(peers)].heart_beat(), copies=3)
            speaker.heard.clear()
        speaker.listen_for(begin + seconds - time.monotonic())

    def test_forty_peers(self):
        for interval in [int(text) for text in os.environ.get("INTERVAL", "10 1").split()]:
            self.measure(interval)
            self.doCleanups()


if __name__ == "__main__":
    homecase.main()
