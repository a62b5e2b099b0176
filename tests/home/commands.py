"""Commands from a set to phones that take them, that take their time, and that go away."""

import re
import time

import phonecase
from homecase import PATIENCE
from lab.attempts import Attempts
from lab.peer import COMMAND, Service, between
from phonecase import NAME


def number_of(message):
    return int(re.search(rb"<Count>(\d+)</Count>", message.text).group(1))


class Commands(phonecase.PhoneCase):
    places = 2
    log = "off"

    def setUp(self):
        super().setUp()
        self.phone = self.phone_at("phone1")
        self.other = self.phone_at("phone2")

    def give(self, phone, numbers):
        """One command for each number, as fast as the set takes them."""
        self.tv.say_all(f"command {phone.id} <Count>{number}</Count>" for number in numbers)

    def numbers(self, phone):
        return [number_of(message) for message in list(phone.commands.taken)]

    def ask(self, most=1.0):
        """The set's own tree answers. @return the seconds it took."""
        begin = time.monotonic()
        self.assertEqual("tv1", self.tv.ask(NAME))
        seconds = time.monotonic() - begin
        self.assertLess(seconds, most * PATIENCE, self.statistics("longest"))
        return seconds

    def others_are_served(self, number):
        """@return the seconds a command to the other phone took."""
        begin = time.monotonic()
        self.give(self.other, [number])
        self.assertIsNotNone(self.other.commands.wait_for(
            lambda message: number_of(message) == number, 1 * PATIENCE))
        return time.monotonic() - begin

    def wait_for_attempts(self, attempts, count, seconds=10):
        self.wait_until(lambda: attempts.count >= count, seconds,
                        lambda: f"{attempts.count} of {count} attempts")

    # What is done, with as many as the short and the long form say

    def arrive_in_order_and_once(self, count):
        begin = time.monotonic()
        self.give(self.phone, range(count))
        self.assertTrue(self.phone.commands.wait_for_count(count, 60 * PATIENCE),
                        f"{len(self.phone.commands.taken)} of {count}")
        seconds = time.monotonic() - begin
        self.ask()
        self.others_are_served(0)
        taken = self.phone.commands.taken
        self.assertEqual(list(range(count)), self.numbers(self.phone))
        self.assertEqual(count, self.phone.commands.accepted)
        self.assertEqual(count, len({message.header("MessageID") for message in taken}))
        print(f"\n  {count} commands in {seconds:.2f} s: each once and in order", flush=True)

    def phone_hangs_up(self, count):
        """It takes the first half, and of the rest each text, but it never confirms one."""
        half = count // 2
        self.phone.commands.confirm = lambda message: b"\n" if number_of(message) < half else None
        self.give(self.phone, range(count))
        seconds = max(self.others_are_served(number) for number in range(5))
        local = max(self.ask() for _ in range(5))
        expected = list(range(half)) + [number for number in range(half, count) for _ in range(3)]
        self.assertTrue(self.phone.commands.wait_for_count(len(expected), 60 * PATIENCE))
        self.phone.commands.confirm = None
        self.give(self.phone, [count])  # and then it works again
        self.assertIsNotNone(self.phone.commands.wait_for(
            lambda message: number_of(message) == count))
        self.assertEqual(expected + [count], self.numbers(self.phone))
        self.assertEqual(list(range(5)), self.numbers(self.other))
        print(f"\n  meanwhile a command to another phone took at most {seconds:.3f} s, a local read "
              f"{local:.3f} s", flush=True)

    def port_is_closed(self, count):
        """Somewhere in the middle. Attempts are counted by their first packets."""
        attempts = Attempts(self.phone.node, self.home.network, COMMAND)
        self.addCleanup(attempts.close)
        self.give(self.phone, range(count))
        self.phone.commands.wait_for_count(count // 4)
        self.phone.commands.close()
        taken = self.numbers(self.phone)
        self.others_are_served(0)
        self.ask()
        expected = len(taken) + 3 * (count - len(taken))
        self.wait_for_attempts(attempts, expected, 30)
        time.sleep(0.3)
        self.assertEqual(expected, attempts.count)
        self.assertEqual(list(range(len(taken))), taken)
        self.assertLess(len(taken), count)
        self.phone.commands = Service(self.phone.node, self.home.network, COMMAND)
        self.give(self.phone, [count])
        self.assertTrue(self.phone.commands.wait_for_count(1))
        time.sleep(0.1)
        self.assertEqual([count], self.numbers(self.phone))
        print(f"\n  {len(taken)} taken, {count - len(taken)} tried three times each", flush=True)

    def phone_falls_silent(self):
        """It keeps the connections. Each attempt is given up after 3 s; then the phone says Bye."""
        self.phone.commands.confirm = (
            lambda message: b"\n" if number_of(message) == 0 else Service.KEEP)
        begin = time.monotonic()
        self.give(self.phone, range(3))
        slowest = 0.0
        number = 0
        while len(self.phone.commands.taken) < 5:
            slowest = max(slowest, self.others_are_served(number))
            number += 1
            self.ask()
            time.sleep(0.2)
            self.assertLess(time.monotonic() - begin, 15 * PATIENCE)
        seconds = time.monotonic() - begin
        self.assertGreater(seconds, 8.5)
        self.phone.tell_group(self.phone.says.bye())
        self.wait_until(lambda: self.phone.id not in self.tv.ask(phonecase.MOBILE))
        time.sleep(4)
        self.assertEqual([0, 1, 1, 1, 2], self.numbers(self.phone))
        self.assertEqual(list(range(number)), self.numbers(self.other))
        print(f"\n  given up after {seconds:.1f} s; meanwhile {number} commands to another phone, the "
              f"slowest {slowest:.3f} s", flush=True)

    def phone_is_odd(self):
        """It takes a second, confirms with something else, or closes: it has the text all the
        same."""
        answers = [b"\n", b"yes", b"", b"\n\n"]

        def confirm(message):
            number = number_of(message)
            if number % len(answers) == 0:
                time.sleep(1)
            return answers[number % len(answers)]

        self.phone.commands.confirm = confirm
        self.give(self.phone, range(2 * len(answers)))
        self.assertTrue(self.phone.commands.wait_for_count(2 * len(answers)))
        time.sleep(0.3)
        self.assertEqual(list(range(2 * len(answers))), self.numbers(self.phone))

    # Commands that come back

    def returns(self):
        """A set asks, a phone answers: the value reaches who asked, also when many are under way."""
        self.tv.say_all(f"command {self.phone.id} <Ask>{number}</Ask>" for number in range(20))
        self.assertTrue(self.phone.commands.wait_for_count(20))
        for message in reversed(self.phone.commands.taken):
            value = between(message.text, "Ask")
            self.phone.tell(self.address, COMMAND, self.phone.says.command_return(
                f"<Answer>{value} &lt;</Answer>", message.header("MessageID")))
        for message in self.phone.commands.taken:
            self.printed(f"returned {message.header('MessageID')} "
                         f"<Answer>{between(message.text, 'Ask')} &lt;</Answer>")
