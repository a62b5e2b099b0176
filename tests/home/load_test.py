"""A set under load, in short; tests/long/load.py measures."""

import homecase
import load


class LoadShort(load.Load):
    def test_everybody_is_answered(self):
        self.everybody_is_answered(2)


if __name__ == "__main__":
    homecase.main()
