#!/usr/bin/env python3
"""1,000 subscriptions of 20 devices on one set: all hear of each change, the devices leave, memory
returns; five times over.

usage: ZELV_BUILD=build-release tests/long/watchers.py
"""

import os
import sys

sys.path[0] = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "home")
# pylint: disable=wrong-import-position
import homecase  # noqa: E402
import watchers  # noqa: E402


class WatchersLong(watchers.Watchers):
    def test_1000_subscriptions(self):
        self.all_hear_and_all_leave(1000, 5)


if __name__ == "__main__":
    homecase.main()
