"""A set that is killed during its first start starts again, and is one set for ever."""

import homecase
from first_start import FirstStart


class FirstStartTest(FirstStart):
    def test_killed_at_20_moments(self):
        self.interrupted_at(20)


if __name__ == "__main__":
    homecase.main()
