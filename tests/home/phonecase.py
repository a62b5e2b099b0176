"""What the tests of a set and phones share: the phones are lab.peer's, which know nothing of the
library."""

import re
import signal

import homecase
from homecase import PATIENCE, ids
from lab.peer import COMMAND, DATA, Phone

MOBILE = "/Zelv/Devices/Mobile/@ID"
REMOTE_TV = "/Zelv/Devices/RemoteTV/@ID"
NAME = "/Zelv/Devices/LocalTV/Name/text()"
GUID = r"[0-9a-f]{8}(?:-[0-9a-f]{4}){3}-[0-9a-f]{12}"


class PhoneCase(homecase.HomeCase):
    """A set that starts for each test as for the first time, and phones that it knows. The network
    is shared."""

    interval = 60  # nobody is dropped for silence
    places = 1
    log = "warning"

    @classmethod
    def setUpClass(cls):
        cls.home = cls._home()
        cls.addClassCleanup(cls.home.down)
        cls.home.up(1, cls.places, start=False)

    def setUp(self):
        self.tv = self.home.node("tv1")
        self.home.start_sets()
        self.addCleanup(self.remove_set)
        self.id = self.tv.identifier()
        self.address = self.tv.address
        for port in (DATA, COMMAND):
            self.wait_until(lambda port=port: self.takes_connections(port),
                            what=f"the set does not listen at {port}")

    def remove_set(self):
        if self.tv.is_running():
            self.home.end(self.tv, signal.SIGKILL)
        self.tv.forget()

    def takes_connections(self, port):
        node = self.home.node("phone1")
        probe = Phone.socket_at(self.home.network, node)
        with probe:
            return probe.connect_ex((self.address, port)) == 0

    def phone_at(self, name="phone1", kind="MOBILE", known=True):
        phone = Phone(self.home.node(name), self.home.network, kind, name)
        self.addCleanup(phone.close)
        if known:
            self.introduce(phone)
        return phone

    def introduce(self, phone):
        phone.tell_group(phone.says.hello())
        path = MOBILE if phone.says.kind == "MOBILE" else REMOTE_TV
        self.wait_until(lambda: phone.id in ids(self.tv.ask(path)), what="the phone is not found")

    def resources(self):
        process = self.tv.process
        return {"threads": process.status("Threads"), "descriptors": process.descriptors(),
                "memory": process.status("RssAnon")}

    def statistics(self, word):
        """The lines of `stats` that begin with the word, cut at blanks."""
        since = len(self.tv.lines())
        self.tv.say("stats")
        self.printed("stats ", since)
        return [line.split(" ") for line in self.tv.lines(since) if line.startswith(word + " ")]

    def remote_subscriptions(self):
        return int(self.statistics("remote")[0][2])

    def same_text(self, expected, text):
        """Byte by byte, with GUID for any identifier."""
        pattern = re.escape(expected).replace("GUID", GUID)
        self.assertRegex(text.decode(), f"^{pattern}\n$")

    def printed(self, prefix, since=0, seconds=10):
        return self.tv.wait_for(prefix, since, seconds * PATIENCE)

    def ends_in_order(self):
        process = self.tv.process
        self.assertLess(self.home.end(self.tv), 5 * PATIENCE)
        self.assertEqual(0, process.exit_status, self.tv.read("log"))
