"""Commands, remote data and input on the wire, byte by byte, as a set sends them and as it reads
them."""

import socket

import phonecase
import homecase
from lab.peer import COMMAND, DATA, INPUT, between
from lab.speaker import new_id
from phonecase import NAME

ODD = "/Zelv/Devices/LocalTV[Name='tv1']/Name/text()"
ESCAPED = "/Zelv/Devices/LocalTV[Name=&apos;tv1&apos;]/Name/text()"


class Answers(phonecase.PhoneCase):
    """A phone asks for the set's tree."""

    def setUp(self):
        super().setUp()
        self.phone = self.phone_at()

    def on_data(self, subscription, value, tv=None):
        return (f"<Envelope><Header><SenderID>{self.id}</SenderID><MessageID>GUID</MessageID>"
                f"<From>tcp://{tv or self.address}:4446/</From></Header><Body><OnData><SubscriptionId>"
                f"{subscription}</SubscriptionId><Data>{value}</Data></OnData></Body></Envelope>")

    def tell(self, text):
        self.assertEqual(b"\n", self.phone.tell(self.address, DATA, text))

    def test_a_request_is_answered_once_at_the_address_it_names(self):
        for path in (NAME, ODD, f"/Zelv[@DeviceId='{self.id}']/Devices/LocalTV/Name/text()"):
            since = len(self.phone.data.taken)
            transaction = new_id()
            self.tell(self.phone.says.request_data(path, transaction))
            answer = self.phone.data.wait_for(lambda message: True, since=since)
            self.assertIsNotNone(answer, path)
            self.same_text(self.on_data(transaction, "tv1"), answer.text)
        self.tv.write(NAME, "changed")
        self.assertEqual("changed", self.phone.read(self.address, NAME))
        self.assertEqual(4, len(self.phone.data.taken))

    def test_the_text_of_a_request_is_read_as_peers_write_it(self):
        transaction = new_id()
        self.tell(f"<Envelope><Header><NotifyTo>tcp://{self.phone.says.address}:4446/</NotifyTo>"
                  f"<SenderID>{self.phone.id}</SenderID></Header><Body>\n <RequestData>"
                  f"<XPath>{ESCAPED}</XPath> <TransactionId>{transaction}</TransactionId>"
                  "</RequestData></Body></Envelope>")
        answer = self.phone.data.wait_for(lambda message: True)
        self.same_text(self.on_data(transaction, "tv1"), answer.text)

    def test_a_subscription_follows_the_data_until_it_ends(self):
        subscription = self.phone.watch(self.address, NAME)
        first = self.phone.data.wait_for(lambda message: True)
        self.same_text(self.on_data(subscription, "tv1"), first.text)
        self.tell(self.phone.says.set_data(NAME, "kitchen"))
        second = self.phone.data.wait_for(lambda message: True, since=1)
        self.same_text(self.on_data(subscription, "kitchen"), second.text)
        self.tell(self.phone.says.unsubscribe_data(subscription))
        self.wait_until(lambda: self.remote_subscriptions() == 0, what="the subscription stays")
        self.tell(self.phone.says.set_data(NAME, "hall"))
        self.comes_to_be_read("hall", NAME)
        self.assertEqual(["tv1", "kitchen"], self.phone.values(subscription))

    def comes_to_be_read(self, value, path):
        """A message is confirmed before it is carried out, so the next one may be there first."""
        self.wait_until(lambda: self.phone.read(self.address, path, 0.5) == value,
                        what=f"'{value}' is not read")

    def test_a_value_that_is_xml_arrives_as_xml_both_ways(self):
        value = "<Address>10.77.0.1</Address>"
        self.assertEqual(value, self.phone.read(
            self.address, "/Zelv/Devices/LocalTV/Interfaces/NetworkInterface/IPv4/Address"))
        self.tell(self.phone.says.set_data("/Zelv/Devices/LocalTV/Location",
                                           "<Location><Room a='1'>x y</Room></Location>"))
        self.comes_to_be_read("<Room a='1'>x y</Room>", "/Zelv/Devices/LocalTV/Location/Room")

    def test_several_values_come_as_one_text(self):
        self.assertEqual("DataControl&#x13;TVControl&#x13;CommandControl&#x13;InputControl&#x13;"
                         "AssetManagement&#x13;UPnPDiscoveryPing", self.phone.read(
                             self.address, "/Zelv/Configuration/Services/Service/Name/text()"))

    def test_nothing_comes_for_what_is_not_there(self):
        self.tell(self.phone.says.request_data("/Zelv/Devices/LocalTV/Nothing/text()"))
        self.assertEqual("tv1", self.phone.read(self.address, NAME))
        self.assertEqual(1, len(self.phone.data.taken))


class Questions(phonecase.PhoneCase):
    """The set asks for the tree of another, which is spoken by hand."""

    def setUp(self):
        super().setUp()
        self.other = self.phone_at(kind="TV")
        self.path = f"/Zelv[@DeviceId='{self.other.id}']" + ODD.removeprefix("/Zelv")

    def question(self, kind, identifier):
        tag = {"RequestData": "TransactionId", "SubscribeData": "SubscriptionId"}[kind]
        return (f"<Envelope><Header><SenderID>{self.id}</SenderID><MessageID>GUID</MessageID><From>"
                f"tcp://{self.address}:4446/</From><NotifyTo>tcp://{self.address}:4446/</NotifyTo>"
                f"</Header><Body><{kind}><{tag}>{identifier}</{tag}><XPath>{ESCAPED}</XPath></{kind}>"
                "</Body></Envelope>")

    def answer(self, identifier, value):
        self.assertEqual(b"\n", self.other.tell(self.address, DATA,
                                                self.other.says.on_data(identifier, value)))

    def test_get_asks_once_and_prints_the_answer(self):
        since = len(self.tv.lines())
        self.tv.say("get " + self.path)
        identifier = self.printed("queued ", since).split(" ")[1]
        message = self.other.data.wait_for(lambda message: True)
        self.same_text(self.question("RequestData", identifier), message.text)
        self.answer(identifier, "<b>from afar</b>")
        self.assertEqual(f"data {identifier} {self.path} <b>from afar</b>",
                         self.printed("data ", since))
        self.assertEqual(1, len(self.other.data.taken))

    def test_sub_asks_once_and_prints_each_value(self):
        since = len(self.tv.lines())
        self.tv.say("sub " + self.path)
        identifier = self.printed("subscribed ", since).split(" ")[1]
        message = self.other.data.wait_for(lambda message: True)
        self.same_text(self.question("SubscribeData", identifier), message.text)
        for value in ("one", "two", ""):
            self.answer(identifier, value)
            self.printed(f"data {identifier} {self.path} {value}", since)
        self.tv.say("unsub " + identifier)
        self.printed("unsubscribed ", since)
        self.answer(identifier, "late")
        self.tv.ask(NAME)
        self.assertNotIn("late", self.tv.read())
        self.assertEqual(1, len(self.other.data.taken))

    def test_an_answer_under_another_identifier_reaches_nobody(self):
        since = len(self.tv.lines())
        self.tv.say("get " + self.path)
        identifier = self.printed("queued ", since).split(" ")[1]
        self.answer(new_id(), "wrong")
        self.answer(identifier, "right")
        self.assertEqual(f"data {identifier} {self.path} right", self.printed("data ", since))


class Commands(phonecase.PhoneCase):
    def setUp(self):
        super().setUp()
        self.phone = self.phone_at()

    def test_a_command_goes_out_and_its_return_comes_back(self):
        since = len(self.tv.lines())
        text = "<Show when='now'><b>1 &lt; 2</b>&#x13;</Show>"
        self.tv.say(f"command {self.phone.id} {text}")
        identifier = self.printed("queued ", since).split(" ")[1]
        message = self.phone.commands.wait_for(lambda message: True)
        self.assertEqual(
            f"<Envelope><Header><MessageID>{identifier}</MessageID><SenderID>{self.id}</SenderID>"
            f"<ReplyTo>tcp://{self.address}:4448/</ReplyTo></Header><Body>{text}</Body></Envelope>\n",
            message.text.decode())
        self.assertEqual(b"\n", self.phone.tell(self.address, COMMAND, self.phone.says.command_return(
            "<Shown a='&amp;'/>", identifier)))
        self.assertEqual(f"returned {identifier} <Shown a='&amp;'/>",
                         self.printed("returned ", since))

    def test_a_command_that_comes_is_carried_out_and_answered(self):
        since = len(self.tv.lines())
        question = new_id()
        text = "<Echo> <a b='c'>1 &lt; 2</a></Echo>"
        self.phone.tell(self.address, COMMAND, self.phone.says.command(text, question))
        answer = self.phone.commands.wait_for(lambda message: True)
        self.same_text(f"<Envelope><Header><MessageID>GUID</MessageID><SenderID>{self.id}</SenderID>"
                       f"<RelatesTo>{question}</RelatesTo></Header><Body>{text}</Body></Envelope>",
                       answer.text)
        self.assertEqual(f"command {self.phone.id} {question} {text}",
                         self.printed("command ", since))

    def test_a_repeated_message_is_carried_out_once_however_it_comes(self):
        message = self.phone.says.command("<Echo>once</Echo>")
        for _ in range(3):
            self.phone.drop(self.address, COMMAND, message)
            self.phone.tell(self.address, COMMAND, message)
        self.phone.tell(self.address, COMMAND, self.phone.says.command("<Echo>last</Echo>"))
        self.assertTrue(self.phone.commands.wait_for_count(2))
        self.assertEqual([b"once", b"last"],
                         [between(text, "Echo").encode() for text in self.phone.commands.texts()])

    def test_a_return_value_never_reaches_a_handler(self):
        self.phone.tell(self.address, COMMAND, self.phone.says.command_return("<Echo>x</Echo>",
                                                                              new_id()))
        self.phone.tell(self.address, COMMAND, self.phone.says.command("<Echo>last</Echo>"))
        self.assertTrue(self.phone.commands.wait_for_count(1))
        self.assertEqual("last", between(self.phone.commands.texts()[0], "Echo"))
        self.assertIn("No callback related to message", self.tv.read("log"))


class Input(phonecase.PhoneCase):
    def setUp(self):
        super().setUp()
        self.phone = self.phone_at(known=False)

    def test_input_comes_alone_or_in_an_envelope(self):
        says = self.phone.says
        for text in (says.on_input("Key", "Up"), says.envelope("", says.on_input("Key", "Up"))):
            since = len(self.tv.lines())
            self.phone.drop(self.address, INPUT, text)
            self.assertEqual(f"input Key {self.phone.id} anna Up", self.printed("input ", since))

    def test_each_datagram_is_an_event_and_nothing_is_sent_back(self):
        text = self.phone.says.on_input("Text", "<a>x</a><b/>", "Anna B")
        expected = f"input Text {self.phone.id} Anna\\x20B <a>x</a>&#x13;<b/>"
        with self.phone.socket(socket.SOCK_DGRAM) as sender:
            for _ in range(2):
                sender.sendto(text.encode(), (self.address, INPUT))
            self.wait_until(lambda: self.tv.lines().count(expected) == 2, what=self.tv.read)
            sender.settimeout(0.2)
            self.assertRaises(TimeoutError, sender.recv, 100)

    def test_what_cannot_be_read_comes_without_a_type(self):
        for text in ("no XML", self.phone.says.on_input("Key", "Up").partition("<User")[0]):
            since = len(self.tv.lines())
            self.phone.drop(self.address, INPUT, text)
            self.assertEqual("input - - - ", self.printed("input ", since))
        self.phone.drop(self.address, INPUT, self.phone.says.on_input("Nobody's", "1"))
        self.phone.drop(self.address, INPUT, self.phone.says.on_input("Key", "last"))
        self.printed(f"input Key {self.phone.id} anna last")
        self.assertNotIn("Nobody's", self.tv.read())


if __name__ == "__main__":
    homecase.main()
