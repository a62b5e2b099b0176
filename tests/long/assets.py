#!/usr/bin/env python3
"""Files of a live set over HTTP: of all sizes up to 2 GiB, some that change while they are sent, beside
1,000 clients that send a byte a minute, and 100,000 in a row, 64 at a time.

usage: ZELV_BUILD=build-release tests/long/assets.py
       SLOW, ROUNDS and PAUSE (seconds) in the environment, else 1000, 3, 60; REQUESTS, else 100000
"""

import os
import sys

sys.path[0] = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "home")
# pylint: disable=wrong-import-position
import homecase  # noqa: E402
import assets  # noqa: E402


def number(name, otherwise):
    return int(os.environ.get(name, otherwise))


class AssetsLong(assets.Assets):
    def test_files_of_all_sizes_arrive(self):
        self.sizes_arrive((0, 1, 8191, 8192, 8193, 1 << 20), 2 << 30)

    def test_files_that_shrink_end_the_answer(self):
        for size in (16 << 20, (16 << 20) + 1, 20 << 20, (32 << 20) - 1):
            with self.subTest(size=size):
                came, behind = self.file_changes_while_it_is_sent(
                    32 << 20, lambda path, size=size: os.truncate(path, size))
                self.assertEqual((size, b""), (came, behind))

    def test_files_that_are_removed_or_replaced_arrive(self):
        for change in (os.remove, replace):
            with self.subTest(change=change.__name__):
                came, behind = self.file_changes_while_it_is_sent(256 << 20, change)
                self.assertEqual(256 << 20, came)
                self.assertRegex(behind, assets.WHOLE)

    def test_slow_clients_by_the_thousand_keep_nobody_from_a_file(self):
        self.slow_clients(number("SLOW", 1000), number("ROUNDS", 3), number("PAUSE", 60))

    def test_100000_requests_64_at_a_time(self):
        self.many_requests(number("REQUESTS", 100000), 64, 0)


def replace(path):
    with open(path + ".new", "wb") as file:
        file.write(b"another")
    os.replace(path + ".new", path)


if __name__ == "__main__":
    homecase.main()
