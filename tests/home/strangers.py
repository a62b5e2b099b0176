"""Strangers at the services of a set: commands, remote data and input that nobody should send, while
a well-behaved phone wants its answers and the set its own."""

import os
import random
import threading
import time

import phonecase
from homecase import PATIENCE
from hostile import element
from lab.peer import COMMAND, DATA, INPUT, Caller, Service
from lab.speaker import new_id
from phonecase import NAME

# What the allocator keeps aside for each thread is none of the set's.
os.environ.setdefault("MALLOC_ARENA_MAX", "1")

LIMIT = 4096  # remote subscriptions
QUEUES = 256
PARTS = ("Envelope", "Header", "SenderID", "MessageID", "ReplyTo", "RelatesTo", "From", "NotifyTo",
         "Body", "RequestData", "SubscribeData", "UnsubscribeData", "OnData", "SetData",
         "TransactionId", "SubscriptionId", "XPath", "Data", "Echo", "OnInput", "Type", "Value",
         "DeviceGuid", "UserNickname")
PATHS = ("", "/", "//", "/Zelv", "/Zelv/", "Zelv/Devices", "/Zelv[", "/Zelv[@DeviceId=",
         "/Zelv[@DeviceId='", "/Zelv[@DeviceId='x']", "/Zelv[@DeviceId='x']/Devices",
         "/Zelv[@DeviceId=\"x']/Devices/LocalTV", "/Zelv/Devices[", "/Zelv/Devices[@ID='",
         "/Zelv/Devices/LocalTV[Name='", "/Zelv/Devices/LocalTV[Name=\"x']/Name",
         "/Zelv/Devices/LocalTV[[[[", "/Zelv/Devices/LocalTV]]]]/Name", "/Zelv/Devices/../..",
         "/Zelv/Devices/LocalTV/Name/text()[", "/Zelv/Devices/LocalTV/Name/text()' or '1'='1",
         "/Zelv/" + "[" * 1000, "/Zelv/" + "a/" * 1000, "/Zelv/Devices/*[*[*[*[*[*]]]]]",
         "/Zelv/Devices/" + "*[1]/" * 100, "/Zelv//*//*//*//*[.//*//*//*]", "/Zelv/" + "x" * 100000,
         "/Zelv/Devices/LocalTV\n/Name", "/Zelv/Devices\t\x01/LocalTV", "/Zelv/\xff\xfe",
         "/Zelv/Devices/LocalTV[@ID='&quot;&#x13;&apos;']", "/Zelv/Devices/LocalTV[position()<",
         "/Zelv/Devices/LocalTV/Name/text()" + "/" * 3000, "/Zelv/Devices/LocalTV[last(last(last(")
# These name a part of the tree, which a phone may write: what stands between the first brackets is not
# looked at, and white space means nothing in a path.
REAL = ("/Zelv[@DeviceId=\"x']/Devices/LocalTV", "/Zelv/Devices/LocalTV\n/Name")
NO_GUIDS = ("", " ", "x", "{", "{}", "-", "0", "g" * 36, "0" * 35, "0" * 37, "-" * 36,
            "00000000-0000-0000-0000-000000000000", "00000000-0000-0000-0000-00000000000",
            "{6ba7b810-9dad-11d1-80b4-00c04fd430c8", "6ba7b810-9dad-11d1-80b4-00c04fd430c8" * 100,
            "=" * 22, "A" * 22, "A" * 24, "x" * 100000, "' or '1'='1", "<", "&lt;", "\0", "]]>")
URLS = ("", "x", "tcp", "tcp:", "tcp://", "tcp://:", "tcp:///", "tcp://:4446/", "tcp://x", "tcp://x:",
        "tcp://x:y/", "tcp://10.77.0.1", "tcp://10.77.0.1:/", "tcp://10.77.0.1:0/",
        "tcp://10.77.0.1:-1/", "tcp://10.77.0.1:99999/", "tcp://10.77.0.1:4446x/",
        "tcp://no.such.host:4446/", "tcp://[::1]:4446/", "http://10.77.0.1:4446/",
        "udp://10.77.0.1:4446/", "udp://10.77.0.1:4451/", "udp://239.255.44.46:4451/",
        "udp://10.77.255.255:4451/", "tcp://239.255.44.46:4451/", "tcp://255.255.255.255:4446/",
        "tcp://0.0.0.0:4446/", "tcp://0:4446/", "tcp://127.0.0.1:4446/", "tcp://127.0.0.1:4448/",
        "tcp://10.77.0.1:4448/", "tcp://10.77.0.1:4447/", "tcp://10.77.0.1:4446/", "x" * 100000,
        "tcp://" + "1." * 1000 + ":4446/", "tcp://10.77.0.1:4446/" + "x" * 100000)


class Strangers(phonecase.PhoneCase):
    """After each test the set has answered all the while, has given back what it took, and ends."""

    places = 2
    log = "off"

    def setUp(self):
        super().setUp()
        self.random = random.Random(7)
        self.stranger = self.phone_at("phone1", known=False)
        self.stranger.data.close()  # he takes no answers, unless the test says so
        self.stranger.commands.close()
        self.good = self.phone_at("phone2")
        self.slowest = {"local": 0.0, "remote": 0.0, "command": 0.0}
        self.most = self.resources()
        self.warm_up()
        self.before = self.resources()

    def warm_up(self):
        """Each way once, so that what comes later is only what is not given back."""
        for port, messages in self.messages().items():
            for message in messages.values():
                self.send(port, message)
        self.ask()
        time.sleep(0.5)

    def messages(self, says=None, notify_to=None):
        """One of each kind, by port."""
        says = says or self.stranger.says
        return {DATA: {"RequestData": says.request_data(NAME, notify_to=notify_to),
                       "SubscribeData": says.subscribe_data(NAME, notify_to=notify_to),
                       "UnsubscribeData": says.unsubscribe_data(new_id()),
                       "OnData": says.on_data(new_id(), "value"),
                       "SetData": says.set_data("/Zelv/Devices/LocalTV/Model/text()", "x")},
                COMMAND: {"Echo": says.command("<Echo>x</Echo>"),
                          "Return": says.command_return("<Echo>x</Echo>", new_id())},
                INPUT: {"OnInput": says.on_input("Key", "Up")}}

    def send(self, port, text):
        text = text if isinstance(text, bytes) else text.encode(errors="surrogateescape")
        try:
            if port == INPUT:
                self.stranger.drop(self.address, port, text[:65000])
            else:
                self.stranger.tell(self.address, port, text)
        except OSError:
            pass  # the set has closed, or there is no room at the moment

    def ask(self, most=1.0):
        """The set's own tree, a phone's read, and a command with its return."""
        self.timed("local", most, lambda: self.tv.ask(NAME) is not None)
        self.timed("remote", most, lambda: self.good.read(self.address, NAME, 8) is not None)
        self.timed("command", most, self.command_is_answered)
        for name, value in self.resources().items():
            self.most[name] = max(self.most[name], value)

    def command_is_answered(self):
        question = new_id()
        since = len(self.good.commands.taken)
        self.good.tell(self.address, COMMAND, self.good.says.command("<Echo>?</Echo>", question))
        return self.good.commands.wait_for(
            lambda message: message.header("RelatesTo") == question, 8, since)

    def timed(self, what, most, question):
        begin = time.monotonic()
        self.assertTrue(question(), f"{what}: no answer")
        seconds = time.monotonic() - begin
        self.slowest[what] = max(self.slowest[what], seconds)
        self.assertLess(seconds, most * PATIENCE, what)

    def send_all(self, port, texts, pause_every=50):
        for count, text in enumerate(texts, 1):
            self.send(port, text)
            if count % pause_every == 0:
                self.ask()
        self.ask()

    def check(self, memory_kib=4096, threads=2):
        """What the strangers have left goes with the change of the list that their going is."""
        self.good.tell_group(self.good.says.bye())
        self.wait_until(lambda: self.tv.ask(phonecase.MOBILE) == "")
        self.wait_until(lambda: self.remote_subscriptions() == 0)
        self.introduce(self.good)
        self.ask()
        self.wait_until(lambda: self.resources()["threads"] <= self.before["threads"] + threads, 20,
                        lambda: f"{self.before} {self.resources()}")
        after = self.resources()
        print(f"\n  {self._testMethodName}: before {self.before}, most {self.most}, after {after}, "
              "slowest " + ", ".join(f"{what} {seconds:.3f} s"
                                     for what, seconds in self.slowest.items()), flush=True)
        self.assertLessEqual(after["descriptors"], self.before["descriptors"] + 2)
        if PATIENCE == 1:  # the sanitizers keep what is freed
            self.assertLessEqual(after["memory"], self.before["memory"] + memory_kib)
        self.ends_in_order()

    # What is done, as often or as long as the short and the long form say

    def spoil_all(self):
        """Each message with each of its elements missing, doubled, empty, large, or with NUL bytes;
        cut anywhere; in another order."""
        for port, messages in self.messages().items():
            for message in messages.values():
                self.send_all(port, self.spoilt(message))
        self.check(memory_kib=16384)

    def spoilt(self, text):
        for part in PARTS:
            whole = element(text, part)
            if whole is None:
                continue
            for other in ("", whole * 2, f"<{part}/>", f"<{part}></{part}>",
                          f"<{part}>{'x' * 100000}</{part}>", f"<{part}>\0</{part}>",
                          f"<{part}>{whole}</{part}>", f"<{part}", f"<{part}>", f"</{part}>",
                          f"<{part} a='b'>x</{part}>", f"<{part}><![CDATA[</{part}>"):
                yield text.replace(whole, other, 1)
            yield whole
        for size in range(0, len(text), max(1, len(text) // 40)):
            yield text[:size]
        head, body = element(text, "Header"), element(text, "Body")
        if head and body:
            yield f"<Envelope>{body}{head}</Envelope>"
        yield text * 2
        yield text.replace("><", ">\n<")

    def odd_values(self):
        """Paths, identifiers and addresses that are none."""
        says = self.stranger.says
        for path in PATHS:
            texts = [says.request_data(path), says.subscribe_data(path)]
            if path not in REAL:
                texts += [says.set_data(path, "x"), says.set_data(path, "")]
            with self.subTest(path=path[:60]):
                self.send_all(DATA, texts, 1000)
        for text in NO_GUIDS:
            self.send_all(DATA, [says.request_data(NAME, text), says.subscribe_data(NAME, text),
                                 says.unsubscribe_data(text), says.on_data(text, "x")], 1000)
            self.send_all(COMMAND, [says.command("<Echo>x</Echo>", text),
                                    says.command_return("<Echo>x</Echo>", text),
                                    says.command_return("<Echo>x</Echo>", new_id(), text)], 1000)
        for url in URLS:
            self.send_all(DATA, [says.request_data(NAME, notify_to=url),
                                 says.subscribe_data(NAME, notify_to=url)], 1000)
            self.send_all(COMMAND, [says.command("<Echo>x</Echo>", reply_to=url)], 1000)
        self.assertEqual("tv1", self.tv.ask(NAME))
        self.check(memory_kib=16384)

    def answers_to_itself(self, count):
        """NotifyTo and ReplyTo name the set's own services."""
        own = f"tcp://{self.address}:4446/"
        says = self.stranger.says
        self.send_all(DATA, (says.subscribe_data(NAME, notify_to=own) for _ in range(count)))
        self.send_all(COMMAND, (says.command("<Echo>x</Echo>",
                                             reply_to=f"tcp://{self.address}:4448/")
                                for _ in range(count)))
        for number in range(5):
            self.send(DATA, self.good.says.set_data(NAME, f"name {number}"))
            self.ask()
        self.check(memory_kib=16384)

    def answers_to_nobody(self, count, port):
        """To so many addresses that are not there, or, with a port, to closed ones of one host that
        is: a queue and a thread each, in the end no more than there may be."""
        says = self.stranger.says

        def url(number):
            if port:
                return f"tcp://{self.stranger.says.address}:{port + number}/"
            return f"tcp://10.77.{100 + number // 250}.{number % 250 + 1}:4446/"

        begin = time.monotonic()
        for number in range(count):
            self.send(DATA, says.subscribe_data(NAME, notify_to=url(number)))
            if number % 20 == 0:
                self.ask()
        for number in range(5):
            self.send(DATA, self.good.says.set_data(NAME, f"name {number}"))
            self.ask()
        queues = len(self.statistics("device-queue"))
        seconds = time.monotonic() - begin
        print(f"\n  {count} addresses, {queues} queues after {seconds:.1f} s", flush=True)
        self.assertLessEqual(queues, QUEUES)
        self.assertLessEqual(self.most["threads"], self.before["threads"] + 2 * QUEUES + 20)
        self.check(memory_kib=16384)

    def commands_to_nobody(self, count):
        """A return value is sent on the thread that all commands share, and its receiver is not
        there: what comes meanwhile waits, but nothing else does."""
        says = self.stranger.says
        for number in range(count):
            self.send(COMMAND, says.command("<Echo>x</Echo>",
                                            reply_to=f"tcp://10.77.100.{number + 1}:4448/"))
        for _ in range(10):
            self.timed("local", 1, lambda: self.tv.ask(NAME) is not None)
            self.timed("remote", 1, lambda: self.good.read(self.address, NAME, 5) is not None)
        self.timed("command", 3.5 * count + 1, self.command_is_answered_late)
        self.check()

    def command_is_answered_late(self):
        question = new_id()
        self.good.tell(self.address, COMMAND, self.good.says.command("<Echo>?</Echo>", question))
        return self.good.commands.wait_for(
            lambda message: message.header("RelatesTo") == question, 60)

    def invented_senders(self, count):
        """Subscriptions, each of another device, that nobody takes back. The good phone's own still
        work."""
        sink = Service(self.stranger.node, self.home.network, DATA)
        self.addCleanup(sink.close)

        def subscriptions():
            for _ in range(count):
                yield Caller(self.stranger.says.address).subscribe_data(NAME)

        self.send_all(DATA, subscriptions(), 500)
        held = self.remote_subscriptions()
        self.assertLessEqual(held, LIMIT)
        since = len(self.good.data.taken)
        subscription = self.good.watch(self.address, NAME)
        self.send(DATA, self.good.says.set_data(NAME, "changed"))
        self.assertIsNotNone(self.good.data.wait_for(
            lambda message: b"<Data>changed</Data>" in message.text and
            subscription.encode() in message.text, 5 * PATIENCE, since))
        print(f"\n  {count} subscriptions, {held} held", flush=True)
        # The allocator keeps the room of so many.
        self.check(memory_kib=32768)

    def flood(self, seconds):
        """Questions, writes, commands and input at full speed from several threads."""
        ending = threading.Event()
        sent, answered = [], []
        says = self.stranger.says

        def work(port, make):
            count = 0
            while not ending.is_set():
                self.send(port, make())
                count += 1
            sent.append(count)

        makers = [(DATA, lambda: says.request_data(NAME)), (DATA, lambda: says.set_data(
            "/Zelv/Devices/LocalTV/Location/text()", new_id())),
                  (DATA, lambda: says.set_data("/Zelv/Devices/LocalTV/Location/text()", new_id())),
                  (COMMAND, lambda: says.command("<Nobody>x</Nobody>")),
                  (INPUT, lambda: says.on_input("Nobody", "x" * 3000))]
        threads = [threading.Thread(target=work, args=maker) for maker in makers]
        for thread in threads:
            thread.start()
        # Few connections may wait at a port. Who finds no place is tried again by the kernel after one,
        # two, four seconds, so that a phone waits, but it is answered.
        asker = threading.Thread(target=self.ask_as_phone, args=(ending, answered))
        asker.start()
        questions = 0
        try:
            deadline = time.monotonic() + seconds
            while time.monotonic() < deadline:
                self.timed("local", 1.0, lambda: self.tv.ask(NAME) is not None)
                questions += 1
                time.sleep(0.05)
        finally:
            ending.set()
            for thread in [*threads, asker]:
                thread.join()
        self.assertNotIn(False, answered)
        self.assertGreater(len(answered), 0)
        print(f"\n  {sum(sent)} messages; meanwhile {questions} local questions answered, and "
              f"{len(answered)} of a phone", flush=True)
        self.check(memory_kib=16384)

    def ask_as_phone(self, ending, answered):
        while not ending.is_set():
            begin = time.monotonic()
            answered.append(self.good.read(self.address, NAME, 40) is not None)
            self.slowest["remote"] = max(self.slowest["remote"], time.monotonic() - begin)

    def huge(self, mebibytes):
        """Twice: the allocator keeps the room of the first time, the second must not take more."""
        self.send_huge(mebibytes)
        self.before["memory"] = self.resources()["memory"]
        self.send_huge(mebibytes)
        # But for one text and what the parser makes of it, which may lie in the way of the rest.
        self.check(memory_kib=mebibytes * 6 * 1024)

    def send_huge(self, mebibytes):
        """Texts as large as a message may be, and some that are never finished."""
        says = self.stranger.says
        large = "x" * (mebibytes << 20)
        self.send_all(DATA, [says.set_data("/Zelv/Devices/LocalTV/Location/text()", large),
                             says.request_data("/Zelv/" + large),
                             says.on_data(new_id(), large), large,
                             "<a>" * (len(large) // 3)], 1)
        self.send_all(COMMAND, [says.command(f"<Echo>{large}</Echo>", reply_to=""),
                                says.command(f"<{large}>"), "<Envelope>" + large], 1)
        open_ends = []
        for _ in range(50):
            connection = self.stranger.socket()
            self.addCleanup(connection.close)
            connection.connect((self.address, self.random.choice((DATA, COMMAND))))
            connection.sendall(b"<Envelope><Header>")
            open_ends.append(connection)
        for _ in range(5):
            self.ask()
        for connection in open_ends:
            connection.close()
