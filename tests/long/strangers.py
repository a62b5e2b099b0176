#!/usr/bin/env python3
"""Strangers at the services of a set: every message of commands, remote data and input spoilt, answers
to 500 addresses that never answer and to 500 closed ports, subscriptions of 20,000 invented senders, a
minute's flood, texts as large as they may be.

usage: ZELV_BUILD=build-release tests/long/strangers.py
"""

import os
import sys

sys.path[0] = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "home")
# pylint: disable=wrong-import-position
import homecase  # noqa: E402
import strangers  # noqa: E402


class StrangersLong(strangers.Strangers):
    def test_every_message_with_every_part_spoilt(self):
        self.spoil_all()

    def test_paths_identifiers_and_addresses_that_are_none(self):
        self.odd_values()

    def test_answers_that_go_to_the_set_itself(self):
        self.answers_to_itself(500)

    def test_answers_that_go_to_closed_ports(self):
        self.answers_to_nobody(500, 5000)

    def test_answers_that_go_to_addresses_that_never_answer(self):
        self.answers_to_nobody(500, 0)

    def test_returns_that_go_to_addresses_that_never_answer(self):
        self.commands_to_nobody(5)

    def test_subscriptions_of_invented_senders(self):
        self.invented_senders(20000)

    def test_a_flood(self):
        self.flood(60)

    def test_huge_texts(self):
        self.huge(15)


if __name__ == "__main__":
    homecase.main()
