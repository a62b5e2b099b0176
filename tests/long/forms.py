#!/usr/bin/env python3
"""Homes of 2, 10 and 40 sets, with five phones each, form within 3 s of the last start.

usage: ZELV_BUILD=build-release tests/long/forms.py
"""

import os
import sys

sys.path[0] = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "home")
# pylint: disable=wrong-import-position
import homecase  # noqa: E402
from forming import Forming  # noqa: E402


class Forms(Forming):
    def test_2_sets_and_5_phones(self):
        self.form(2, 5)

    def test_10_sets_and_5_phones(self):
        self.form(10, 5)

    def test_40_sets_and_5_phones(self):
        self.form(40, 5)


if __name__ == "__main__":
    homecase.main()
