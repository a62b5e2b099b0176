"""A bad network, in short; tests/long/lossy.py has the long form."""

import time

import homecase
import lossy


class LossyShort(lossy.Lossy):
    def test_who_lives_is_in_every_list_and_nobody_is_told_twice(self):
        self.live(3, 20, lossy.BAD + " --seed 7")
        self.check_presence()

    def test_a_set_whose_cable_is_pulled_comes_back_with_it(self):
        home = self.home_of(2, 0, "--cut tv2:5:6")
        one, other = home.sets
        for node, peer in ((one, other), (other, one)):
            node.wait_for(f"arrived TV {peer.identifier()} ")
        for node, peer in ((one, other), (other, one)):
            node.wait_for(f"left TV {peer.identifier()}", seconds=20)
        since = [len(node.lines()) for node in home.sets]
        begin = time.monotonic()
        one.wait_for(f"arrived TV {other.identifier()} ", since[0], 30)
        other.wait_for(f"arrived TV {one.identifier()} ", since[1], 30)
        print(f"\n  back {time.monotonic() - begin:.1f} s after it was missed", flush=True)


if __name__ == "__main__":
    homecase.main()
