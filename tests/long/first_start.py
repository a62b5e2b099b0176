#!/usr/bin/env python3
"""Kills a set at random moments of its first start: it starts again, and is one set for ever.

usage: ZELV_BUILD=build-release [ZELV_SEED=N] tests/long/first_start.py
"""

import os
import sys

sys.path[0] = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "home")
# pylint: disable=wrong-import-position
import homecase  # noqa: E402
import first_start  # noqa: E402


class FirstStart(first_start.FirstStart):
    def test_killed_at_100_moments(self):
        self.interrupted_at(100)

    def test_killed_at_100_moments_while_what_it_has_started_goes_on(self):
        self.interrupted_at(100, with_children=False)


if __name__ == "__main__":
    homecase.main()
