#!/usr/bin/env python3
"""Five minutes on a network that loses 20 %, doubles 10 % and reorders 10 % of the frames.

usage: ZELV_BUILD=build-release tests/long/lossy.py    SEED and SECONDS in the environment
"""

import os
import sys

sys.path[0] = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "home")
# pylint: disable=wrong-import-position
import homecase  # noqa: E402
import lossy  # noqa: E402


class LossyLong(lossy.Lossy):
    def test_who_lives_is_in_every_list_and_nobody_is_told_twice(self):
        seed = os.environ.get("SEED", "1")
        seconds = int(os.environ.get("SECONDS", "300"))
        self.live(10, seconds, f"{lossy.BAD} --seed {seed}")
        self.check_presence()


if __name__ == "__main__":
    homecase.main()
