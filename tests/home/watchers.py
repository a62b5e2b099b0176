"""Many devices that watch one set, and that leave: with a goodbye, or without a word."""

import os
import threading
import time

import phonecase
from homecase import PATIENCE, ids
from lab.peer import DATA, Caller, Service, subscription_of, value_of
from lab.speaker import new_id
from phonecase import MOBILE, NAME

# What the allocator keeps aside for each thread is none of the set's.
os.environ.setdefault("MALLOC_ARENA_MAX", "1")

PHONES = 20


class Watcher:
    """A device with a port of its own, at the place that all of them share."""

    def __init__(self, phone, number):
        self.phone = phone
        self.service = Service(phone.node, phone.network, 0)
        self.says = Caller(phone.says.address, "MOBILE", f"watcher {number}")
        self.subscriptions = []

    def watch(self, address, path, count):
        notify_to = f"tcp://{self.says.address}:{self.service.port}/"
        for _ in range(count):
            self.subscriptions.append(new_id())
            self.phone.tell(address, DATA, self.says.subscribe_data(path, self.subscriptions[-1],
                                                                    notify_to))

    def heard(self, value):
        """The subscriptions at which it has come."""
        return sorted(subscription_of(message) for message in list(self.service.taken)
                      if value_of(message) == value)


class Hearts(threading.Thread):
    """Beat for all that have not left."""

    def __init__(self, phone, watchers, interval):
        super().__init__(daemon=True)
        self.phone = phone
        self.beating = list(watchers)
        self.interval = interval
        self.ending = threading.Event()
        self.start()

    def run(self):
        while not self.ending.wait(self.interval):
            for watcher in list(self.beating):
                self.phone.tell_group(watcher.says.heart_beat())

    def stop(self):
        self.ending.set()
        self.join()


class Watchers(phonecase.PhoneCase):
    interval = 2
    log = "off"

    def setUp(self):
        super().setUp()
        self.phone = self.phone_at(known=False)
        self.before = self.resources()

    def arrive(self):
        self.watchers = [Watcher(self.phone, number) for number in range(PHONES)]
        for watcher in self.watchers:
            self.addCleanup(watcher.service.close)
        self.hearts = Hearts(self.phone, self.watchers, 0.5)
        self.addCleanup(self.hearts.stop)
        for watcher in self.watchers:
            self.phone.tell_group(watcher.says.hello())
        self.wait_until(lambda: len(ids(self.tv.ask(MOBILE))) == PHONES)

    def told(self, value):
        self.wait_until(lambda: all(watcher.heard(value) == sorted(watcher.subscriptions)
                                    for watcher in self.watchers), 20,
                        lambda: str([len(watcher.heard(value)) for watcher in self.watchers]))

    def change(self, value):
        """Told to the set by one of those who watch. @return the seconds until all have heard."""
        begin = time.monotonic()
        self.phone.tell(self.address, DATA, self.watchers[0].says.set_data(NAME, value))
        self.told(value)
        return time.monotonic() - begin

    def leave(self):
        """Half of them say so, the others fall silent."""
        half = PHONES // 2
        self.hearts.beating = []
        for watcher in self.watchers[:half]:
            self.phone.tell_group(watcher.says.bye())
        gone = {watcher.says.id for watcher in self.watchers[:half]}
        self.wait_until(lambda: not gone & ids(self.tv.ask(MOBILE)))
        self.wait_until(lambda: self.tv.ask(MOBILE) == "", 20, "the silent ones stay")
        self.wait_until(lambda: self.remote_subscriptions() == 0, 10, self.state)
        self.wait_until(lambda: not self.statistics("device-queue"), 10, self.state)

    def state(self):
        return str(self.statistics("remote") + self.statistics("device-queue"))

    def all_hear_and_all_leave(self, count, rounds=1):
        """@param count  subscriptions of all of them together."""
        resources = []
        for number in range(rounds):
            self.arrive()
            for watcher in self.watchers:
                watcher.watch(self.address, NAME, count // PHONES)
            self.wait_until(lambda: self.remote_subscriptions() == count, 10, self.state)
            self.told(f"name {number - 1}" if number else "tv1")
            self.assertEqual(PHONES, len(self.statistics("device-queue")))
            held = self.resources()
            seconds = [self.change(f"name {number} {turn}") for turn in range(4)]
            seconds.append(self.change(f"name {number}"))
            self.leave()
            self.hearts.stop()
            self.wait_until(lambda: self.resources()["threads"] <= self.before["threads"] + 2, 15,
                            lambda: str(self.resources()))
            resources.append(self.resources())
            print(f"\n  {count} subscriptions of {PHONES} devices: all have heard after "
                  f"{sorted(seconds)[2]:.3f} s; before {self.before}, with them {held}, afterwards "
                  f"{resources[-1]}", flush=True)
        self.assertLessEqual(resources[-1]["descriptors"], self.before["descriptors"] + 1)
        if PATIENCE == 1:  # the sanitizers keep what is freed
            self.assertLessEqual(resources[-1]["memory"], resources[0]["memory"] + 1024)
            self.assertLessEqual(resources[0]["memory"], self.before["memory"] + 4096)
        self.ends_in_order()
