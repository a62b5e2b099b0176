#!/usr/bin/env python3
"""Hostile datagrams against a live set: random ones at full speed for a minute, heartbeats from
100,000 invented devices, more Hellos than the list takes, every message spoilt in every part.

usage: ZELV_BUILD=build-release tests/long/hostile.py
"""

import os
import sys

sys.path[0] = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "home")
# pylint: disable=wrong-import-position
import homecase  # noqa: E402
import hostile  # noqa: E402


class HostileLong(hostile.Hostile):
    def test_every_message_with_every_part_spoilt(self):
        self.spoil_all(5)

    def test_random_datagrams_for_a_minute(self):
        self.random_datagrams(60)

    def test_heartbeats_of_100000_invented_devices(self):
        self.invented_devices(100000)

    def test_deep_and_large_texts(self):
        self.deep_and_large()

    def test_hellos_of_2000_invented_devices(self):
        self.invented_sets(2000)


if __name__ == "__main__":
    homecase.main()
