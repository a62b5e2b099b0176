#!/usr/bin/env python3
"""Local reads of a set while a phone reads, watches and writes over eight connections at full speed:
the medians of several rounds, and how many times longer reads take at the 99th percentile.

The phone has one processor for itself, being another device; the set and the program that reads from
it have the other, with and without the phone.

usage: ZELV_BUILD=build-release tests/long/load.py    ROUNDS and SECONDS in the environment, else 5, 5
"""

import os
import sys

sys.path[0] = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "home")
# pylint: disable=wrong-import-position
import homecase  # noqa: E402
import load  # noqa: E402


class LoadLong(load.Load):
    def test_local_reads_stay_quick(self):
        self.measure(int(os.environ.get("ROUNDS", "5")), float(os.environ.get("SECONDS", "5")))


if __name__ == "__main__":
    homecase.main()
