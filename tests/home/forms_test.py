"""A home forms: everybody sees everybody."""

import os
import signal
import subprocess
import sys
import time

import homecase
from forming import Forming
from homecase import Home, ids


class Forms(Forming):
    def test_two_sets_and_a_phone_see_each_other(self):
        home = self.form(2, 1)
        one, other = home.sets
        self.assertEqual({other.identifier()}, ids(one.ask("/Zelv/Devices/RemoteTV/@ID")))
        self.assertEqual({one.identifier()}, ids(other.ask("/Zelv/Devices/RemoteTV/@ID")))
        for node in home.sets:
            self.assertEqual("phone1", node.ask("/Zelv/Devices/Mobile/Name/text()"))
            self.assertEqual("tv2" if node is one else "tv1",
                             node.ask("/Zelv/Devices/RemoteTV/Name/text()"))

    def test_ten_sets_and_five_phones_see_each_other(self):
        self.form(10, 5)

    def test_nothing_is_left_of_a_home(self):
        home = self.home_of(1, 1)
        processes = [node.process for node in home.sets]
        names = [home.network.namespace(node) for node in home.nodes]
        directory = home.directory
        home.down()
        self.assertFalse(any(process.is_alive() for process in processes))
        self.assertFalse(homecase.leftovers(names + [directory]))


class Nothing(homecase.HomeCase):
    """Nothing is left of a home, whatever happened to it."""

    def command(self, verb, *program):
        child = subprocess.Popen([sys.executable, "-B", os.path.join(homecase.ROOT, "lab", "home"),
                                  "--name", "gone", verb, "--build", self._home().build, "--tvs",
                                  "4", "--phones", "0", *program],
                                 stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(child.kill)
        return child

    def sets(self):
        return homecase.processes_with("/run/zelv-gone/tv")

    def check(self):
        self.wait_until(lambda: not self.sets(), what="a set lives on")
        left = [name for name in os.listdir("/run") if name.startswith("zelv-gone")]
        left += [name for name in os.listdir("/run/netns") if name.startswith("zelv-gone")]
        self.assertEqual([], left)

    def test_when_it_is_interrupted_while_it_is_put_up(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            for pause in (0.1, 1.0):
                child = self.command("up")
                self.wait_until(lambda: os.path.exists("/run/zelv-gone") or child.poll() is not None)
                time.sleep(pause)
                child.send_signal(number)
                child.wait(30)
                if child.returncode == 0:  # it was up already
                    Home("gone").load().down()
                self.check()

    def test_when_the_program_that_holds_it_is_killed(self):
        child = self.command("run", "sleep", "100")
        self.wait_until(lambda: len(self.sets()) == 4, 20)
        child.kill()
        child.wait()
        self.check()


if __name__ == "__main__":
    homecase.main()
