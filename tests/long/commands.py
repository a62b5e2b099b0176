#!/usr/bin/env python3
"""10,000 commands from a set to one phone arrive in order and once; phones that go away in the middle.

usage: ZELV_BUILD=build-release tests/long/commands.py
"""

import os
import sys

sys.path[0] = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "home")
# pylint: disable=wrong-import-position
import homecase  # noqa: E402
import commands  # noqa: E402


class CommandsLong(commands.Commands):
    def test_10000_given_at_once_arrive_in_order_and_once(self):
        self.arrive_in_order_and_once(10000)

    def test_a_phone_that_hangs_up_is_tried_three_times_for_each_text(self):
        self.phone_hangs_up(5000)

    def test_a_phone_whose_port_is_closed_is_tried_three_times_for_each_text(self):
        self.port_is_closed(10000)

    def test_a_phone_that_falls_silent_keeps_nobody_waiting(self):
        self.phone_falls_silent()

    def test_a_phone_that_has_the_text_does_not_get_it_twice(self):
        self.phone_is_odd()


if __name__ == "__main__":
    homecase.main()
