"""How a set leaves: without a word, or in order."""

import signal
import time

import homecase
from homecase import PATIENCE

# An interval is a second; stamps are whole seconds, so that a silence of 1.2 intervals is sure once
# it has lasted three of them, and it is the tick that looks.
LEAST = 1.2
MOST = 4.0


class Leaving(homecase.HomeCase):
    def setUp(self):
        self.home = self.home_of(2, 1)
        self.one, self.other = self.home.sets
        self.identifier = self.other.identifier()
        self.one.wait_for(f"arrived TV {self.identifier} ")

    def gone(self, seconds):
        self.one.wait_for(f"left TV {self.identifier}", seconds=seconds)
        return time.monotonic()

    def test_a_killed_set_is_dropped_after_1_2_intervals_of_silence(self):
        speaker = self.speaker_at(self.home, "phone1")
        self.assertIsNotNone(speaker.wait_for(lambda message: message.kind == "HeartBeat" and
                                              message.device == self.identifier))
        self.home.end(self.other, signal.SIGKILL)
        speaker.listen_for(0.05)
        beat = [message for message in speaker.all("HeartBeat")
                if message.device == self.identifier][-1]
        silence = self.gone(20) - beat.when
        print(f"\n  a killed set was dropped {silence:.2f} s after its last heartbeat", flush=True)
        self.assertGreaterEqual(silence, LEAST)
        self.assertLess(silence, MOST + 0.5 * PATIENCE)
        self.assertIn(f"Device '{self.identifier}' not sending heartbeat, assuming it's dead.",
                      self.one.read("log"))

    def test_a_set_that_ends_in_order_is_gone_at_once(self):
        begin = time.monotonic()
        self.other.process.signal(signal.SIGTERM)
        seconds = self.gone(20) - begin
        print(f"\n  one that ended in order was gone after {seconds:.3f} s", flush=True)
        self.assertLess(seconds, 0.8 * PATIENCE)
        self.assertTrue(self.other.process.wait(5))
        self.assertNotIn("assuming it's dead", self.one.read("log"))

    def test_a_set_that_comes_back_is_the_same_one(self):
        self.home.end(self.other, signal.SIGKILL)
        since = len(self.one.lines())
        self.gone(20)
        self.home.start(self.other)
        self.one.wait_for(f"arrived TV {self.identifier} ", since)
        self.assertEqual(self.identifier, self.other.identifier())


if __name__ == "__main__":
    homecase.main()
