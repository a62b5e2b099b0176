"""Strangers who want answers where nobody takes them, in short; tests/long/strangers.py has the long
form."""

import homecase
import strangers


class Answers(strangers.Strangers):
    def test_that_go_to_the_set_itself(self):
        self.answers_to_itself(20)

    def test_that_go_to_closed_ports(self):
        self.answers_to_nobody(50, 5000)

    def test_that_go_to_addresses_that_never_answer(self):
        self.answers_to_nobody(100, 0)

    def test_to_commands_that_go_to_addresses_that_never_answer(self):
        self.commands_to_nobody(1)

    def test_to_subscriptions_of_invented_senders(self):
        self.invented_senders(500)


if __name__ == "__main__":
    homecase.main()
