"""Devices that watch one set, in short; tests/long/watchers.py has the long form."""

import homecase
import watchers


class WatchersShort(watchers.Watchers):
    def test_all_hear_of_a_change_and_nothing_is_left_of_those_who_leave(self):
        self.all_hear_and_all_leave(60)


if __name__ == "__main__":
    homecase.main()
