"""Strangers at the services of a set, in short; tests/long/strangers.py has the long form."""

import homecase
import strangers


class StrangersShort(strangers.Strangers):
    def test_every_message_with_every_part_spoilt(self):
        self.spoil_all()

    def test_paths_identifiers_and_addresses_that_are_none(self):
        self.odd_values()

    def test_answers_that_go_to_the_set_itself(self):
        self.answers_to_itself(20)

    def test_answers_that_go_to_closed_ports(self):
        self.answers_to_nobody(50, 5000)

    def test_answers_that_go_to_addresses_that_never_answer(self):
        self.answers_to_nobody(100, 0)

    def test_returns_that_go_to_addresses_that_never_answer(self):
        self.commands_to_nobody(1)

    def test_subscriptions_of_invented_senders(self):
        self.invented_senders(500)

    def test_a_flood(self):
        self.flood(2)

    def test_huge_texts(self):
        self.huge(1)


if __name__ == "__main__":
    homecase.main()
