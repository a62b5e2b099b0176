"""Strangers at the services of a set, in short; tests/long/strangers.py has the long form."""

import homecase
import strangers


class StrangersShort(strangers.Strangers):
    def test_every_message_with_every_part_spoilt(self):
        self.spoil_all()

    def test_paths_identifiers_and_addresses_that_are_none(self):
        self.odd_values()

    def test_a_flood(self):
        self.flood(2)

    def test_huge_texts(self):
        self.huge(1)


if __name__ == "__main__":
    homecase.main()
