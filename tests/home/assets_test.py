"""Files of a live set over HTTP, in short; tests/long/assets.py has the long form."""

import http.client
import os
import socket
import struct
import time

import homecase
import assets
from homecase import PATIENCE
from assets import (BRANCH, OF_GET, PACKAGE_ELEMENT, PACKAGE_ID, PICTURE_ELEMENT, PICTURE_ID,
                    WHOLE)
from lab.peer import DATA
from lab.assets import (BAD_REQUEST, GET, Stream, all_of, answer_of, ask_for, boundary_of, contents,
                        envelope, post, read_by_email)

LIMIT = 512 << 10
AT_ONCE = struct.pack("ii", 1, 0)
TYPED = ("Host: tv", "Content-Type: text/xml")


class AssetsShort(assets.Assets):
    # Clients that nobody here wrote

    def test_a_get_of_anything_gives_the_picture_to_every_client(self):
        for path in ("/", "/no/such?thing", "/tv.png", "/../../etc/passwd"):
            answer, body = self.http("GET", path)
            self.assertEqual((202, "Accepted", "close"),
                             (answer.status, answer.reason, answer.getheader("Connection")))
            boundary = answer.getheader("Content-Type").removeprefix("multipart/related; boundry=")
            self.assertTrue(answer_of(boundary, OF_GET, self.picture).endswith(body), path)
            status, answer = self.curl("--path-as-is", f"http://{self.address}:4450{path}")
            self.assertEqual(0, status)
            self.expect_answer(answer, OF_GET, self.picture)
        for request in (b"GET\r\n\r\n", b"GET / HTTP/1.1\r\n\r\n", b"GET / HTTP/1.0\r\nhost: a\r\n\r\n",
                        b"GET /\r\nHost: a:1\r\nno colon\r\n\r\n" + b"x" * 30000):
            self.expect_answer(self.client.exchange(request), OF_GET, self.picture)

    def test_a_post_is_answered_to_every_client(self):
        text = ask_for("<Package name='test' />")
        expected = (contents("type='package' name='test'", PACKAGE_ELEMENT), self.picture)
        answer, body = self.http("POST", body=text, headers={"Content-Type": "text/xml"})
        self.assertEqual(202, answer.status)
        boundary = answer.getheader("Content-Type").removeprefix("multipart/related; boundry=")
        self.assertTrue(answer_of(boundary, *expected).endswith(body))
        for kind in ((), ("--header", "Content-Type: application/soap+xml")):
            status, answer = self.curl(*kind, "--data-binary", text, f"http://{self.address}:4450/")
            self.assertEqual(0, status)
            self.expect_answer(answer, *expected)

    def test_a_reader_of_mail_takes_the_answer_apart(self):
        files = [("text/plain", "0", b""), ("text/plain", "1", b"\r\n"),
                 ("application/binary", "2", self.random.randbytes(100000)),
                 ("application/binary", "3", bytes(range(256)) + b"\r\n--x\r\n\r\r\n\n" * 5000)]
        elements = []
        for kind, number, data in files:
            source = number + (".txt" if kind == "text/plain" else ".unknown")
            self.write_file("mail/" + source, data)
            elements.append(f"<File src='{source}' ID='{number}'/>")
        element = self.load("mail", "mail/", "".join(elements))
        answer = self.client.exchange(post(ask_for("<Package name='mail' />")))
        text = contents("type='package' name='mail'", element)
        self.expect_answer(answer, text, *files)
        self.assertEqual([("application/soap+xml", "AssetContents", text.encode()), *files],
                         read_by_email(answer))
        self.assertEqual([("application/soap+xml", "AssetContents", OF_GET.encode()), self.picture],
                         read_by_email(self.client.exchange(GET)))

    # What is asked, and the bytes that come

    def test_answers_byte_by_byte(self):
        by_name = contents("type='asset' name='TVImage' package='test'", PICTURE_ELEMENT)
        by_id = contents(f"ID='{PICTURE_ID}' package='test'", PICTURE_ELEMENT)
        nothing = contents("type='asset' name='None'", "")
        rows = [
            ("<Package name='test' />",
             contents("type='package' name='test'", PACKAGE_ELEMENT), self.picture),
            (f"<Package ID='{PACKAGE_ID}' />",
             contents(f"type='package' ID='{PACKAGE_ID}'", PACKAGE_ELEMENT), self.picture),
            ("<Package ID='other' name='test' />",
             contents("type='package' name='test'", PACKAGE_ELEMENT), self.picture),
            ("<Package name='test'><Asset name='TVImage' /></Package>", by_name, self.picture),
            (f"<Package name='test'><Asset ID='{PICTURE_ID}' /></Package>", by_id, self.picture),
            (f"<Package ID='{PACKAGE_ID}'><Asset ID='{PICTURE_ID}' /></Package>",
             contents(f"ID='{PICTURE_ID}' package=''", PICTURE_ELEMENT), self.picture),
            (f"<Asset ID='{PICTURE_ID}' />",
             contents(f"type='asset' ID='{PICTURE_ID}'", PICTURE_ELEMENT), self.picture),
            ("<Asset name='/TVImage' />",
             contents("type='asset' name='/TVImage'", PICTURE_ELEMENT), self.picture),
            ("<Asset name='None' />", nothing),
            ("<Package name='none' />", contents("type='package' name='none'", "")),
            ("<Package name='test'><Asset name='None' /></Package>",
             contents("type='asset' name='None' package='test'", "")),
            ("<Asset name='None' /><Package name='none' />",
             contents("type='package' name='none'", ""), nothing),
            ("<Other />",),
            ("<Package />",),
            ("<Asset name='None' /><Asset /><Asset name='TVImage' />", nothing),
        ]
        for things, *parts in rows:
            with self.subTest(things=things):
                self.expect_answer(self.client.exchange(post(ask_for(things))), *parts)
        whole = ask_for("<Asset name='None' />")
        self.expect_answer(self.client.exchange(post(whole + " " * (LIMIT - len(whole)))), nothing)
        # Only what ends the answer has the longer end.
        mixed = (f"<Package name='test'><Asset ID='{PICTURE_ID}' /><Asset name='TVImage' />"
                 "</Package><Asset name='None' />")
        self.expect_answer(self.client.exchange(post(ask_for(mixed))),
                           by_name, self.picture, by_id, self.picture, nothing)
        self.expect_answer(self.client.exchange(post(envelope(
            "<AssetRequest><Asset name='TVImage' /></AssetRequest>"))))

    def test_what_is_no_request_gets_the_page_that_says_so(self):
        whole = ask_for("<Asset name='TVImage' />")
        for request in (post("no XML"), post("<a/>"), post(envelope("<Other/>")),
                        post(envelope("")), post("\0" + whole),
                        post(whole, "Content-Type: text/xml", f"Content-Length: {len(whole)}"),
                        post(whole, "host: tv", "Content-Type: text/xml"),
                        post("", *TYPED, "Content-Length: 0"),
                        post("", *TYPED, "Content-Length: -5"),
                        post(whole, "Host: tv", f"Content-Length: {len(whole)}"),
                        post(" " * LIMIT)):
            with self.subTest(request=request[:150]):
                self.assertEqual(BAD_REQUEST, self.client.exchange(request))
        with self.client.connect() as connection:  # and Python's client can read it
            connection.sendall(post("<a/>"))
            page = http.client.HTTPResponse(connection)
            page.begin()
            self.assertEqual((400, "Bad Request", "text/xml; charset=utf-8"),
                             (page.status, page.reason, page.getheader("Content-Type")))
            self.assertEqual(b'<?xml version="1.0"?>\n<error>400 Bad Request</error>', page.read())

    def test_what_is_refused_gets_nothing(self):
        whole = ask_for("<Asset name='TVImage' />")
        for method in ("HEAD", "PUT", "DELETE", "OPTIONS", "get", "POSTER"):
            with self.subTest(method=method):
                self.expect_nothing(GET.replace(b"GET", method.encode()))
                with self.assertRaises(http.client.RemoteDisconnected):
                    self.http(method)
                status, answer = self.curl("--request", method, f"http://{self.address}:4450/")
                self.assertEqual((52, b""), (status, answer))  # "empty reply from server"
        length = f"Content-Length: {len(whole)}"
        for request in (post("", *TYPED, f"Content-Length: {LIMIT + 1}"),
                        post("", *TYPED, "Content-Length: 99999999999999999999"),
                        post(whole, *TYPED),
                        post("5\r\n<a/>\n\r\n0\r\n\r\n", *TYPED, "Transfer-Encoding: chunked"),
                        post(whole, "Host: tv", "Content-Type: multipart/related; boundary=a", length),
                        post(whole, "Host: tv", "Content-Type: text/xml", length, ":"),
                        b"\r\n\r\n"):
            with self.subTest(request=request[:150]):
                self.expect_nothing(request)
        with self.assertRaises((http.client.RemoteDisconnected, ConnectionError)):
            self.http("POST", body=iter([whole.encode()]), headers={"Content-Type": "text/xml"})
        self.expect_back()

    # Clients that misbehave

    def test_a_peer_that_closes_early_is_gone(self):
        whole = post(ask_for("<Asset name='TVImage' />"))
        cuts = [GET[:size] for size in (0, 1, 4, 5, len(GET) - 3, len(GET) - 1)]
        cuts += [whole[:size] for size in (30, len(whole) - 100, len(whole) - 1)]
        for cut in cuts:
            with self.subTest(cut=cut), self.client.connect() as connection:
                connection.sendall(cut)
                connection.shutdown(socket.SHUT_WR)
                self.assertEqual(b"", all_of(connection))
            for linger in (False, True):  # without waiting, also by a reset
                with self.client.connect() as connection:
                    connection.sendall(cut)
                    if linger:
                        connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, AT_ONCE)
        self.leave_amid_a_file()
        self.expect_back(0)
        # None of them reads nothing at full speed in there.
        spent = self.tv.process.processor_nanoseconds()
        time.sleep(0.3)
        self.assertLess(self.tv.process.processor_nanoseconds() - spent, 0.1e9 * PATIENCE)
        self.expect_picture()

    def leave_amid_a_file(self):
        self.write_file("big/film.ts", b"x" * (32 << 20))
        self.load("big", "big/", "<Film src='film.ts' ID='f'/>")
        for linger in (False, True):
            with self.client.connect() as connection:
                connection.sendall(post(ask_for("<Package name='big' />")))
                stream = Stream(connection)
                self.assertTrue(stream.follows(b"--" + boundary_of(stream.head).encode()))
                if linger:
                    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, AT_ONCE)
                stream.close()

    def test_one_that_sends_a_byte_now_and_then_holds_one_thread(self):
        whole = post(ask_for("<Asset name='TVImage' />"))
        count = 20
        slow = [self.client.connect() for _ in range(count)]
        for each in slow:
            self.addCleanup(each.close)
            each.sendall(whole[:1])
        self.wait_until(lambda: self.threads() == self.connections() == count)
        for number, byte in enumerate(whole[1:]):
            for each in slow:
                each.sendall(bytes([byte]))
            if number % 40 == 20:
                self.expect_picture()
                self.assertLessEqual(self.threads(), count + 1)
                self.assertLessEqual(self.tv.process.descriptors(),
                                     self.before["descriptors"] + count + 1)
        for each in slow:
            self.expect_answer(all_of(each), contents("type='asset' name='TVImage'",
                                                      PICTURE_ELEMENT), self.picture)
        self.expect_back(memory_kib=4096)

    def test_slow_clients_by_the_dozens_keep_nobody_from_a_file(self):
        self.slow_clients(300, 2, 0.3)

    def test_the_set_ends_in_order_while_clients_hang(self):
        self.write_file("big/film.ts", b"x" * (32 << 20))
        self.load("big", "big/", "<Film src='film.ts' ID='f'/>")
        hanging = []
        for request in (b"", b"G", GET[:-2], post("<a", *TYPED, "Content-Length: 100"),
                        post(ask_for("<Package name='big' />")),
                        post(ask_for("<Package name='big' />" * 1000))):
            for _ in range(5):
                connection = self.client.connect()
                self.addCleanup(connection.close)
                connection.sendall(request)
                hanging.append(connection)
        self.wait_until(lambda: self.threads() == len(hanging))
        self.ends_in_order()

    # Paths

    def test_what_a_source_may_name(self):
        self.write_file("in/file.txt", b"inside")
        self.write_file("out.txt", b"outside")
        os.mkdir(self.state("in/folder.txt"))
        os.mkfifo(self.state("in/pipe.txt"))
        os.symlink("file.txt", self.state("in/link.txt"))
        os.symlink("../out.txt", self.state("in/climbing.txt"))
        for number, target in enumerate(("folder.txt", "pipe.txt", "/dev/zero", "nothing", "loop3.txt",
                                         "loop3.txt")):
            os.symlink(target, self.state(f"in/loop{number}.txt"))
        long = "./" * 250 + "file.txt"
        inside, outside = b"inside", b"outside"
        rows = [  # directory, source, what comes: None when no file does
            ("in/", "file.txt", inside), ("", "in/file.txt", inside), ("in", "/file.txt", inside),
            ("in/", ".//file.txt", inside), ("in/", "../out.txt", None), ("in/", "..", None),
            ("in/", "folder.txt/../../out.txt", None), ("", "in/../out.txt", None),
            ("in/.", "./file.txt", None), ("../state/", "out.txt", None),
            ("in/", "/etc/passwd", None), ("", self.state("out.txt"), outside),
            (self.state("in/"), "file.txt", inside),
            ("in/", "link.txt", inside), ("in/", "climbing.txt", outside),
            ("in/", "folder.txt", None), ("in/", "pipe.txt", None), ("", "/dev/zero", None),
            ("", "/proc/self/fd/0", None), ("in/", long, None),
            *[("in/", f"loop{number}.txt", None) for number in range(6)],
        ]
        for path, source, expected in rows:
            with self.subTest(path=path, source=source):
                self.load("p", path, f"<File src='{source}' ID='f'/>")
                answer = self.ask_by_name("File", "p")
                text = contents("type='asset' name='File' package='p'",
                                f"<File src='{source}' ID='f'/>")
                file = [] if expected is None else [("text/plain", "f", expected)]
                self.expect_answer(answer, text, *file)
                self.unload("p")
        self.expect_back()

    def test_a_file_that_cannot_be_had_ends_the_files_of_its_thing(self):
        self.write_file("in/one.txt", b"1")
        elements = ("<File src='one.txt' ID='1'/>", "<File src='two.txt' ID='2'/>",
                    "<File src='one.txt' ID='3'/>")
        self.load("p", "in/", "".join(elements))
        answer = self.client.exchange(post(ask_for("<Asset name='File' /><Asset name='TVImage' />")))
        boundary = boundary_of(answer)
        self.assertEqual(answer_of(
            boundary, contents("type='asset' name='File'", homecase.SEPARATOR.join(elements)),
            ("text/plain", "1", b"1"),
            contents("type='asset' name='TVImage'", PICTURE_ELEMENT), self.picture), answer)

    def test_no_file_is_put_together_from_two_packages(self):
        for name in ("one/mine.txt", "one/other.txt", "two/other.txt"):
            self.write_file(name, name.encode())
        own = "<Thing src='mine.txt' ID='1'/>"
        other = "<Thing src='other.txt' ID='2'/>"
        self.load("a", "one/", own)
        self.load("b", "two/", other)
        self.expect_answer_of_first(own, other)
        # What a loaded package names is served, whichever names it.
        self.load("c", "", "<Any src='one/other.txt' ID='3'/>")
        text = contents("type='asset' name='Thing'", own + homecase.SEPARATOR + other)
        self.expect_answer(self.ask_by_name("Thing"), text, ("text/plain", "1", b"one/mine.txt"),
                           ("text/plain", "2", b"one/other.txt"))

    def expect_answer_of_first(self, own, other):
        answer = self.ask_by_name("Thing")
        text = contents("type='asset' name='Thing'", own + homecase.SEPARATOR + other)
        self.assertEqual([("application/soap+xml", "AssetContents", text.encode()),
                          ("text/plain", "1", b"one/mine.txt")], read_by_email(answer))

    # Packages that come and go

    def test_packages_come_and_go_through_the_tree(self):
        phone = self.phone_at()

        def tell(path, value):
            self.assertEqual(b"\n", phone.tell(self.address, DATA, phone.says.set_data(
                path, value)))

        self.write_file("more/logo.svg", b"<svg/>")
        logo = "<Logo src='logo.svg' ID='l'/>"
        for how in (self.tv.write, tell):
            with self.subTest(how=how.__name__):
                self.load("more", "more/", logo, how)
                self.assertEqual(homecase.SEPARATOR.join(("logo.svg", "tv.png")),
                                 self.tv.ask(BRANCH + "/AssetPackage/*/@src"))
                text = contents("type='asset' name='Logo'", logo)
                self.expect_answer(self.ask_by_name("Logo"), text, ("image/svg+xml", "l", b"<svg/>"))
                self.unload("more", how)
                self.expect_answer(self.ask_by_name("Logo"),
                                   contents("type='asset' name='Logo'", ""))
        self.unload("test", tell)
        self.expect_answer(self.client.exchange(GET), contents(
            "type='asset' name='TVImage'", "", "e3035622-f6ff-46cb-ada6-64fb3b616f08"))

    def test_a_package_that_goes_while_it_is_sent_arrives(self):
        came, behind = self.file_changes_while_it_is_sent(32 << 20, lambda _: self.unload("change"))
        self.assertEqual(32 << 20, came)
        self.assertRegex(behind, WHOLE)

    def test_a_file_that_shrinks_ends_the_answer(self):
        came, behind = self.file_changes_while_it_is_sent(
            32 << 20, lambda path: os.truncate(path, 16 << 20))
        self.assertEqual((16 << 20, b""), (came, behind))

    def test_a_file_that_is_removed_while_it_is_sent_arrives(self):
        came, behind = self.file_changes_while_it_is_sent(32 << 20, os.remove)
        self.assertEqual(32 << 20, came)
        self.assertRegex(behind, WHOLE)

    def test_files_of_all_sizes_arrive(self):
        self.sizes_arrive((0, 1, 8191, 8192, 8193, 1 << 20), 64 << 20)

    def test_1000_requests_16_at_a_time(self):
        self.many_requests(1000, 16)


if __name__ == "__main__":
    homecase.main()
