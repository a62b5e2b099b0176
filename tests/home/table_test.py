"""The states of a remote device and a set's part in a conversation, row by row, over the wire."""

import re
import signal

import homecase
from homecase import ids
from lab.speaker import Peer, new_id

REMOTE_TV = "/Zelv/Devices/RemoteTV/@ID"
MOBILE = "/Zelv/Devices/Mobile/@ID"


class Conversation(homecase.OneSetCase):
    """The set tells of both lists."""

    interval = 60  # no tick disturbs

    def setUp(self):
        super().setUp()
        self.told = {path: homecase.Subscription(self.tv, path) for path in (REMOTE_TV, MOBILE)}
        self.peer = Peer(self.speaker.address, "TV")
        self.phone = Peer(self.speaker.address, "MOBILE")
        self.settle()

    def settle(self):
        """What was sent before has had its effect: answers, and lines printed."""
        self.assertIsNotNone(self.speaker.probe(Peer(self.speaker.address)), "no ProbeMatch")
        self.tv.ask(REMOTE_TV)

    def counts(self):
        return {path: len(told.values()) for path, told in self.told.items()}

    def send(self, text, copies=3, to=None):
        """@return how often each list was told, and what the set sent, besides the settling."""
        before = self.counts()
        since = len(self.speaker.heard)
        if to:
            self.speaker.send(text, to, copies)
        else:
            self.speaker.send(text, copies=copies)
        self.settle()
        after = self.counts()
        sent = [message for message in self.speaker.heard[since:-1] if message.kind != "HeartBeat"]
        return {path: after[path] - before[path] for path in after}, sent

    def expect(self, text, tv=0, mobile=0, sent=()):
        told, heard = self.send(text)
        self.assertEqual({REMOTE_TV: tv, MOBILE: mobile}, told, text)
        self.assertEqual(list(sent), [message.kind for message in heard], text)
        return heard

    def list_of(self, path=REMOTE_TV):
        return ids(self.tv.ask(path))

    def child(self, peer, name):
        element = "RemoteTV" if peer.kind == "TV" else "Mobile"
        return self.tv.ask(f"/Zelv/Devices/{element}[@ID='{peer.id}']/{name}/text()")

    def warned(self, text):
        return self.tv.read("log").count(text)


class Device(Conversation):
    def test_unknown_by_hello_or_probe_match_becomes_known(self):
        for kind, path in (("TV", REMOTE_TV), ("MOBILE", MOBILE)):
            for verb in ("hello", "probe_match"):
                peer = Peer(self.speaker.address, kind)
                told = {"tv": int(kind == "TV"), "mobile": int(kind == "MOBILE")}
                self.expect(getattr(peer, verb)(), **told)
                self.assertIn(peer.id, self.list_of(path))
                self.assertEqual("speaker", self.child(peer, "Name"))
                self.assertEqual("raw", self.child(peer, "Model"))
                self.assertEqual("DataControl", self.child(peer, "Services/Service/Name"))
                self.assertRegex(self.child(peer, "LastHeartBeat"), r"^\d+$")

    def test_unknown_of_another_type_stays_unknown(self):
        for kind in ("ANY", "tv", "", "RADIO"):
            self.expect(Peer(self.speaker.address, kind).hello())
        self.assertEqual(set(), self.list_of())
        self.assertEqual(set(), self.list_of(MOBILE))

    def test_unknown_by_heartbeat_is_asked_for_once(self):
        resolve, = self.expect(self.peer.heart_beat(), sent=["Resolve"])
        self.assertEqual(self.peer.id, resolve.device)
        self.assertEqual(3, resolve.copies)
        # Unresolved from here on: no second Resolve.
        self.expect(self.peer.heart_beat())
        self.assertEqual(set(), self.list_of())

    def test_unknown_by_resolve_match_is_warned_of(self):
        self.expect(self.peer.resolve_match())
        self.assertEqual(set(), self.list_of())
        self.assertEqual(1, self.warned(
            f"(ResolveMatch) deviceID '{self.peer.id}' not in unresolved list of devices."))

    def test_unknown_by_bye_tells_the_phones_list(self):
        self.expect(self.peer.bye(), mobile=1)

    def test_unresolved_by_resolve_match_becomes_known(self):
        self.expect(self.peer.heart_beat(), sent=["Resolve"])
        self.expect(self.peer.resolve_match(), tv=1)
        self.assertEqual({self.peer.id}, self.list_of())
        # The entry is gone with the answer.
        self.expect(self.peer.resolve_match())

    def test_unresolved_by_hello_or_probe_match_becomes_known_and_the_entry_stays(self):
        for verb in ("hello", "probe_match"):
            peer = Peer(self.speaker.address, "TV")
            self.expect(peer.heart_beat(), sent=["Resolve"])
            self.expect(getattr(peer, verb)(), tv=1)
            # Known with an entry: the answer replaces and tells, once.
            peer.name = "resolved"
            self.expect(peer.resolve_match(), tv=1)
            self.assertEqual("resolved", self.child(peer, "Name"))
            self.expect(peer.resolve_match())

    def test_known_by_heartbeat_is_stamped_and_nobody_is_told(self):
        self.expect(self.peer.hello(), tv=1)
        self.expect(self.peer.heart_beat())
        self.assertEqual({self.peer.id}, self.list_of())

    def test_known_by_hello_or_probe_match_is_replaced(self):
        self.expect(self.peer.hello(), tv=1)
        for number, verb in enumerate(("hello", "probe_match")):
            self.peer.name = f"renamed {number}"
            self.expect(getattr(self.peer, verb)(), tv=1)
            self.assertEqual(self.peer.name, self.child(self.peer, "Name"))
            self.assertEqual([self.peer.id], self.tv.ask(REMOTE_TV).split(homecase.SEPARATOR))

    def test_known_by_bye_is_removed(self):
        self.expect(self.peer.hello(), tv=1)
        self.expect(self.phone.hello(), mobile=1)
        self.expect(self.peer.bye(), tv=1)
        self.expect(self.phone.bye(), mobile=1)
        self.assertEqual(set(), self.list_of())
        self.assertEqual(set(), self.list_of(MOBILE))

    def test_a_message_that_comes_three_times_counts_once(self):
        text = self.peer.hello()
        self.expect(text, tv=1)
        self.expect(text)
        self.assertGreaterEqual(self.warned("is duplicate."), 5)

    def test_a_message_without_an_identifier_is_never_a_duplicate(self):
        text = re.sub("<MessageID>.*</MessageID>", "", self.peer.hello())
        self.expect(text, tv=3)


class Ticks(Conversation):
    interval = 1

    def test_known_and_silent_goes_at_a_tick_and_both_lists_are_told(self):
        self.speaker.send(self.peer.hello())
        self.wait_until(lambda: self.list_of() == {self.peer.id})
        before = self.counts()
        self.wait_until(lambda: self.list_of() == set())
        self.settle()
        after = self.counts()
        self.assertEqual([1, 1], [after[path] - before[path] for path in (REMOTE_TV, MOBILE)])
        self.assertEqual(1, self.warned(f"Device '{self.peer.id}' not sending heartbeat"))

    def test_known_that_beats_stays(self):
        self.speaker.send(self.peer.hello())
        self.wait_until(lambda: self.list_of() == {self.peer.id})
        for _ in range(10):
            self.speaker.send(self.peer.heart_beat())
            self.speaker.listen_for(0.5)
            self.assertEqual({self.peer.id}, self.list_of())

    def test_unresolved_is_asked_for_again_once_ten_seconds_are_over(self):
        asked = []
        while len(asked) < 2:
            self.speaker.send(self.peer.heart_beat())
            self.speaker.listen_for(0.25)
            asked = self.speaker.all("Resolve")
            self.assertLess(len(self.speaker.heard), 1000, "no second Resolve")
        pause = asked[1].when - asked[0].when
        # Whole seconds, looked at by a tick of one: more than ten, and the next heartbeat asks.
        self.assertGreater(pause, 9.9)
        self.assertLess(pause, 12.5 + homecase.PATIENCE)
        self.assertEqual(1, self.warned(f"Discard device '{self.peer.id}', resolve sent at"))


class Answers(Conversation):
    def test_a_probe_for_televisions_or_anything_is_answered_to_the_asker_alone(self):
        other = self.speaker
        for wanted in ("TV", "ANY"):
            question = new_id()
            answer, = self.expect(self.peer.probe(wanted, message_id=question), sent=["ProbeMatch"])
            self.assertEqual(question, answer.header("RelatesTo"))
            self.assertEqual((self.tv.address, 3), (answer.source[0], answer.copies))
        elsewhere = f"udp://{other.address}:9"
        self.expect(self.peer.probe("ANY", url=elsewhere))

    def test_a_probe_for_other_types_is_not_answered(self):
        for wanted in ("MOBILE", "tv", "", "RADIO"):
            self.expect(self.peer.probe(wanted))
            self.assertEqual(1, self.warned(f"Ignoring probe for device type '{wanted}'."))

    def test_a_resolve_for_this_device_is_answered(self):
        question = new_id()
        answer, = self.expect(self.peer.resolve(self.id, message_id=question),
                              sent=["ResolveMatch"])
        self.assertEqual(question, answer.header("RelatesTo"))
        self.assertEqual(self.id, answer.device)

    def test_a_resolve_for_another_device_is_not_answered(self):
        self.expect(self.peer.resolve(self.peer.id))
        self.assertEqual(1, self.warned(f"Ignoring resolve for device ID '{self.peer.id}'."))

    def test_a_question_whose_answer_has_nowhere_to_go_is_not_answered(self):
        for url in ("nonsense", f"udp://{self.speaker.address}"):
            self.expect(self.peer.probe(url=url))
            self.expect(self.peer.resolve(self.id, url=url))
            self.assertEqual(1, self.warned(f"(Probe) replyTo is not a URL '{url}'."))
            self.assertEqual(1, self.warned(f"(Resolve) replyTo is not a URL '{url}'."))

    def test_other_messages_are_not_answered(self):
        for body in ("", "<Other/>", "<probe/>", "<Hello/>", "<HeartBeats/>"):
            self.expect(self.peer.envelope("", body))
        for text in ("", "\n", "<", "no XML", "<Envelope>", "\0"):
            self.expect(text)


class Forms(homecase.OneSetCase):
    """Byte by byte what a set sends."""

    interval = 1

    def setUp(self):
        super().setUp()
        self.peer = Peer(self.speaker.address)

    def device(self):
        address = self.tv.address
        services = "".join(
            f"<Service><Name>{name}</Name><URL>{protocol}://{address}:{port}/</URL></Service>"
            for name, protocol, port in (
                ("DataControl", "tcp", 4446), ("TVControl", "tcp", 4447),
                ("CommandControl", "tcp", 4448), ("InputControl", "udp", 4449),
                ("AssetManagement", "http", 4450)))
        return (f"<Device ID='{self.id}'><Name>tv1</Name><Model>zelv-tv</Model>"
                "<Location>Living room</Location><Type>TV</Type>"
                f"<Services>{services}</Services></Device>")

    def check(self, kind, rest, body):
        message = self.speaker.wait_for(lambda heard: heard.kind == kind)
        self.assertIsNotNone(message, kind)
        self.speaker.listen_for(0.1)
        text = message.text.decode()
        message_id = message.header("MessageID")
        self.assertRegex(message_id, r"^[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}$")
        self.assertEqual(
            f"<Envelope><Header><SenderID>{self.id}</SenderID><MessageID>{message_id}</MessageID>"
            f"{rest}</Header><Body>{body}</Body></Envelope>\n", text)
        self.assertEqual(3, message.copies)
        self.assertEqual(self.tv.address, message.source[0])
        return message

    def test_every_message_has_its_form(self):
        address = self.tv.address
        reply = f"<ReplyTo>udp://{address}:4451</ReplyTo>"
        origin = f"<From>{address}</From>"
        own = f"<Device ID='{self.id}' />"
        self.check("Probe", reply,
                   "<Probe><Criteria><Device><Type>ANY</Type></Device></Criteria></Probe>")
        self.check("Hello", origin, f"<Hello>{self.device()}</Hello>")
        self.check("HeartBeat", origin, f"<HeartBeat>{own}</HeartBeat>")
        self.speaker.send(self.peer.heart_beat())
        self.check("Resolve", reply, f"<Resolve><Device ID='{self.peer.id}'/></Resolve>")
        for question, kind in ((self.peer.probe(message_id="a b"), "ProbeMatch"),
                               (self.peer.resolve(self.id, message_id="c"), "ResolveMatch")):
            self.speaker.send(question)
            relates = re.search("<MessageID>(.*)</MessageID>", question).group(1)
            self.check(kind, f"{origin}<RelatesTo>{relates}</RelatesTo>",
                       f"<{kind}>{self.device()}</{kind}>")
        self.tv.process.signal(signal.SIGTERM)
        self.check("Bye", origin, f"<Bye>{own}</Bye>")

    def test_probe_and_hello_come_once_and_in_order_and_heartbeats_follow(self):
        self.speaker.listen_for(3.5)
        kinds = [message.kind for message in self.speaker.heard]
        self.assertEqual(["Probe", "Hello", "HeartBeat", "HeartBeat", "HeartBeat"], kinds[:5])
        beats = [message.when for message in self.speaker.all("HeartBeat")]
        for earlier, later in zip(beats, beats[1:]):
            self.assertAlmostEqual(1.0, later - earlier, delta=0.25 * homecase.PATIENCE)

    def test_the_name_is_read_anew_for_each_message(self):
        self.tv.write("/Zelv/Devices/LocalTV/Name/text()", "bedroom")
        self.assertEqual("bedroom", self.tv.ask("/Zelv/Devices/LocalTV/Name/text()"))
        self.assertIn("<Name>bedroom</Name>", self.speaker.probe(self.peer).text.decode())


if __name__ == "__main__":
    homecase.main()
