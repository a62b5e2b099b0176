"""Commands from a set to phones, in short; tests/long/commands.py has the long form."""

import homecase
import commands


class CommandsShort(commands.Commands):
    def test_500_given_at_once_arrive_in_order_and_once(self):
        self.arrive_in_order_and_once(500)

    def test_a_phone_that_hangs_up_is_tried_three_times_for_each_text(self):
        self.phone_hangs_up(100)

    def test_a_phone_whose_port_is_closed_is_tried_three_times_for_each_text(self):
        self.port_is_closed(200)

    def test_a_phone_that_falls_silent_keeps_nobody_waiting(self):
        self.phone_falls_silent()

    def test_a_phone_that_has_the_text_does_not_get_it_twice(self):
        self.phone_is_odd()

    def test_return_values_reach_those_who_asked(self):
        self.returns()


if __name__ == "__main__":
    homecase.main()
