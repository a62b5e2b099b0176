"""Hostile datagrams against a live set, in short; tests/long/hostile.py has the long form.

Discovery's datagrams are all that a set listens to so far; what strangers do to a listener on TCP is
tested where it stands, in tests/transport.
"""

import homecase
import hostile


class HostileShort(hostile.Hostile):
    def test_every_message_with_every_part_spoilt(self):
        self.spoil_all()

    def test_random_datagrams(self):
        self.random_datagrams(3)

    def test_heartbeats_of_invented_devices(self):
        self.invented_devices(3000)

    def test_deep_and_large_texts(self):
        self.deep_and_large()

    def test_hellos_of_invented_devices(self):
        self.invented_sets(300)


if __name__ == "__main__":
    homecase.main()
