"""Measures how long a home takes until everybody sees everybody."""

import json
import time

from homecase import PATIENCE, HomeCase

MOST = 3.0  # seconds after the last start, with a heartbeat of one second


def seen_by_set(node):
    seen = set()
    for line in node.lines():
        words = line.split(" ")
        if words[0] == "arrived":
            seen.add(words[2])
        elif words[0] == "left":
            seen.discard(words[2])
    return seen


def seen_by_phone(node):
    seen = set()
    for line in node.lines():
        event = json.loads(line)
        (seen.add if event["event"] == "arrived" else seen.discard)(event["id"])
    return seen


class Forming(HomeCase):
    log = "warning"

    def start_all(self, home):
        """@return the moment at which the last set was ready; phones are among the first."""
        home.start(*home.phones)
        return home.start_sets()

    def form(self, tvs, phones, wire=None):
        """@return the seconds from the last start until all see all."""
        home = self.home_of(tvs, phones, wire, start=False)
        last = self.start_all(home)
        sets = {node.identifier() for node in home.sets}
        waiting = {node: None for node in home.nodes.values()}

        def all_see_all():
            for node in list(waiting):
                seen = seen_by_set(node) if node.is_set else seen_by_phone(node)
                missing = sets - seen - ({node.identifier()} if node.is_set else set())
                others = phones if node.is_set else phones - 1
                waiting[node] = (len(missing), others - len(seen - sets))
                if waiting[node] == (0, 0):
                    del waiting[node]
            return not waiting

        def report():
            return "sets and phones that are not seen: " + ", ".join(
                f"{node.name} {missing}" for node, missing in waiting.items())

        self.wait_until(all_see_all, 30, report, 0.05)
        seconds = time.monotonic() - last
        print(f"\n  {tvs} sets and {phones} phones: all see all {seconds:.2f} s after the last start",
              flush=True)
        self.assertLess(seconds, MOST * PATIENCE)
        return home
