"""A home forms: everybody sees everybody."""

import homecase
from forming import Forming
from homecase import ids


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


if __name__ == "__main__":
    homecase.main()
