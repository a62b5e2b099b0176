"""A home on a bad network: who lives is in every list, but for as long as it takes to be asked for
again."""

import time

import homecase
from homecase import PATIENCE
from lab.speaker import Peer

BAD = "--loss 20 --duplicate 10 --reorder 10"
# A Resolve that got lost, or whose answer did, is forgotten by the tick after ten seconds, and the
# next heartbeat asks again.
RESOLVE = 10 + 1 + 1


class Presence:
    """Who is in whose list, read from what the sets print."""

    def __init__(self, sets):
        self.sets = {node: node.identifier() for node in sets}
        self.read = {node: 0 for node in sets}
        now = time.monotonic()
        self.missing = {(node, other): now for node in sets for other in sets if node is not other}
        self.names = {identifier: node for node, identifier in self.sets.items()}
        self.absences = []

    def update(self):
        now = time.monotonic()
        for node in self.sets:
            lines = node.lines(self.read[node])
            self.read[node] += len(lines)
            for line in lines:
                words = line.split(" ")
                if words[0] in ("arrived", "left") and words[2] in self.names:
                    self.note(words[0] == "arrived", (node, self.names[words[2]]), now)

    def note(self, arrived, pair, now):
        if arrived and pair in self.missing:
            self.absences.append(now - self.missing.pop(pair))
        elif not arrived:
            self.missing.setdefault(pair, now)

    def all(self):
        """Those that last still are among them."""
        now = time.monotonic()
        return self.absences + [now - since for since in self.missing.values()]


class Lossy(homecase.HomeCase):
    interval = 1
    log = "warning"

    def live(self, tvs, seconds, options):
        """Lives on the bad network while a phone says Hello twice a second."""
        home = self.home_of(tvs, 1, options)
        self.presence = Presence(home.sets)
        told = {node: homecase.Subscription(node, "/Zelv/Devices/Mobile/@ID") for node in home.sets}
        speaker = self.speaker_at(home, "phone1")
        hellos = self.watch(speaker, seconds)
        time.sleep(0.5)
        for node, subscription in told.items():
            self.check_told(node, len(subscription.values()) - 1, hellos)
        home.wire.signal(15)
        self.assertTrue(home.wire.wait(5))
        print("\n  wire: " + home.wire_log().split("\n")[1], flush=True)
        return self.presence

    def watch(self, speaker, seconds):
        phone = Peer(speaker.address)
        deadline = time.monotonic() + seconds
        hellos = 0
        while time.monotonic() < deadline:
            speaker.send(phone.hello(), copies=3)
            hellos += 1
            for _ in range(10):
                self.presence.update()
                speaker.listen_for(0.05)
            speaker.heard.clear()
        return hellos

    def check_told(self, node, told, hellos):
        """Once for each Hello of which a copy came, and once for each sweep that found somebody
        dead; the phone's list is told of both."""
        dead = node.read("log").count("assuming it's dead")
        self.assertLessEqual(told, hellos + dead, node.name)
        self.assertGreater(told, hellos * 0.85, node.name)

    def report(self):
        absences = sorted(self.presence.all())
        late = [round(seconds, 1) for seconds in absences if seconds > 2.5]
        print(f"\n  {len(absences)} absences, the longest {absences[-1]:.2f} s; over 2.5 s: {late}",
              flush=True)
        return absences

    def check_presence(self):
        self.assertLess(self.report()[-1], 2 * self.interval + RESOLVE + 0.5 * PATIENCE)
