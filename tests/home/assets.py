"""Files of a live set over HTTP, for clients that nobody here wrote and for some that misbehave."""

import http.client
import os
import random
import resource
import socket
import subprocess
import threading
import time

import phonecase
from homecase import PATIENCE, ROOT
from lab import assets
from lab.alone import Visit
from lab.assets import Client, Stream, ask_for, contents, post
from lab.peer import plenty_of_ports

BRANCH = "/Zelv/Storage/Assets"
PICTURE_ID = "A2CE030A-73DC-4c39-958B-E76657A31530"
PACKAGE_ID = "A984A499-EBA5-4b04-BC74-08448843B7C0"
PICTURE_ELEMENT = f"<TVImage src='tv.png' ID='{PICTURE_ID}'/>"
PACKAGE_ELEMENT = f"<AssetPackage ID='{PACKAGE_ID}' name='test' path=''>{PICTURE_ELEMENT}</AssetPackage>"
# What a GET is answered with, whatever it names.
OF_GET = contents("type='asset' name='TVImage'", PICTURE_ELEMENT,
                  "e3035622-f6ff-46cb-ada6-64fb3b616f08")
# What follows the last file of an answer.
WHOLE = rb"^\r\n\r\n--[0-9a-f-]{36}--\r\n$"
CONNECTIONS = 256  # at a time
LISTENING, NOBODY = "0A", "0"  # state and inode, as the kernel writes them
SPARE = 8  # threads that stay for a few seconds, for the next ones


def package_path(name):
    return f"{BRANCH}/AssetPackage[@name='{name}']"


class Assets(phonecase.PhoneCase):
    log = "off"

    def setUp(self):
        super().setUp()
        with open(os.path.join(ROOT, "data", "tv.png"), "rb") as picture:
            self.picture = ("image/png", PICTURE_ID, picture.read())
        self.client = Client(self.home.node("phone1"), self.home.network, self.address)
        plenty_of_ports(self.home.node("phone1"), self.home.network)
        self.wait_until(lambda: self.takes_connections(assets.PORT), what="there are no assets")
        self.expect_picture()
        self.wait_until(lambda: self.connections() == 0, what="connections stay")
        self.before = self.resources()
        self.random = random.Random(7)

    # Clients

    def expect_answer(self, answer, *parts):
        """Byte by byte; but for the boundary, which is the set's choice."""
        boundary = assets.boundary_of(answer)
        self.assertIsNotNone(boundary, answer[:200])
        expected = assets.answer_of(boundary, *parts)
        if len(expected) < 4000:
            self.assertEqual(expected, answer)
        self.assertTrue(expected == answer, f"{len(answer)} bytes, expected {len(expected)}")

    def expect_picture(self):
        """@return the seconds it took."""
        begin = time.monotonic()
        self.expect_answer(self.client.exchange(assets.GET), OF_GET, self.picture)
        return time.monotonic() - begin

    def expect_nothing(self, request):
        """The connection ends without a byte, at once and not by a reset."""
        begin = time.monotonic()
        self.assertEqual(b"", self.client.exchange(request))
        self.assertLess(time.monotonic() - begin, 2 * PATIENCE)

    def curl(self, *arguments):
        """@return status and what it printed, headers included."""
        done = subprocess.run(self.home.node("phone1").at +
                              ["curl", "--silent", "--include", "--max-time", "10", *arguments],
                              stdout=subprocess.PIPE, timeout=30, check=False)
        return done.returncode, done.stdout

    def http(self, method, path="/", body=None, headers=None):
        """The answer that Python's own client gets, with its body. Raises what that raises."""
        connection = http.client.HTTPConnection(self.address, assets.PORT)
        with self.client.connect() as connection.sock:
            connection.request(method, path, body, headers or {})
            answer = connection.getresponse()
            return answer, answer.read()

    # Packages

    def state(self, name=""):
        return os.path.join(self.tv.path("state"), name)

    def write_file(self, name, data):
        """Below the directory in which the set works."""
        path = self.state(name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(data)

    def load(self, name, path, elements, how=None):
        """@return the element of the package, as it is read back."""
        xml = f"<AssetPackage ID='{name}-id' name='{name}' path='{path}'>{elements}</AssetPackage>"
        (how or self.tv.write)(package_path(name), xml)
        self.wait_until(lambda: self.tv.ask(package_path(name)) == xml, what="it is not loaded")
        return xml

    def unload(self, name, how=None):
        (how or self.tv.write)(package_path(name), "")
        self.wait_until(lambda: self.tv.ask(package_path(name)) == "", what="it stays")

    def ask_by_name(self, name, package=None):
        thing = f"<Asset name='{name}' />"
        if package is not None:
            thing = f"<Package name='{package}'>{thing}</Package>"
        return self.client.exchange(post(ask_for(thing)))

    # What is held

    def connections(self):
        """Those over TCP that it has, at any port."""
        with open(f"/proc/{self.tv.process.pid}/net/tcp", encoding="ascii") as table:
            rows = [line.split() for line in table][1:]
        return sum(row[3] != LISTENING and row[9] != NOBODY for row in rows)

    def threads(self):
        """Those that serve, and those that served and wait a while for others to serve."""
        names = []
        for task in os.listdir(f"/proc/{self.tv.process.pid}/task"):
            try:
                with open(f"/proc/{self.tv.process.pid}/task/{task}/comm", "rb") as name:
                    names.append(name.read())
            except OSError:
                pass  # it has ended meanwhile
        return names.count(b"Quorl-AssetConn\n")

    def expect_back(self, spare=SPARE, memory_kib=None):
        """All descriptors are given back, and threads but for those."""
        def back():
            return (self.connections() == 0 and self.threads() <= spare and
                    self.tv.process.descriptors() == self.before["descriptors"])

        self.wait_until(back, 15,
                        lambda: f"{self.resources()}, before {self.before}, {self.threads()} threads")
        if memory_kib is not None and PATIENCE == 1:  # the sanitizers keep what is freed
            self.assertLessEqual(self.resources()["memory"], self.before["memory"] + memory_kib)

    # What is done, for as long or as often as the short and the long form say

    def sizes_arrive(self, sizes, largest):
        """Files of those sizes, and one of holes and marks; memory is watched meanwhile."""
        elements, files = [], []
        for size in sizes:
            self.write_file(f"big/{size}.bin", self.random.randbytes(size))
            files.append((f"big/{size}.bin", size))
        self.write_marks("big/largest.ts", largest)
        files.append(("big/largest.ts", largest))
        for number, (name, _) in enumerate(files):
            elements.append(f"<File src='{os.path.basename(name)}' ID='{number}'/>")
        element = self.load("big", "big/", "".join(elements))
        self.before = self.resources()
        seconds, most = self.compare(element, files)
        print(f"\n  {sum(size for _, size in files)} bytes in {seconds:.1f} s, "
              f"{largest / seconds / 1e6:.0f} MB/s; memory at most {most} KiB more", flush=True)
        self.assertLessEqual(most, 1024 * PATIENCE)
        self.expect_back()

    def write_marks(self, name, size):
        """A sparse file with 4 KiB at the begin of each 64 MiB and at its end."""
        self.write_file(name, b"")
        with open(self.state(name), "r+b") as file:
            file.truncate(size)
            for position in [*range(0, size, 1 << 26), max(0, size - 4096)]:
                file.seek(position)
                file.write(self.random.randbytes(min(4096, size - position)))

    def compare(self, element, files):
        """@return seconds, and the most memory in KiB beyond what there was."""
        most = [0]

        def watch():
            most[0] = max(most[0], self.resources()["memory"] - self.before["memory"])

        begin = time.monotonic()
        with self.client.connect(60) as connection:
            connection.sendall(post(ask_for("<Package name='big' />")))
            stream = Stream(connection)
            boundary = stream.boundary
            self.assertTrue(stream.follows(assets.text_part(
                boundary, contents("type='package' name='big'", element))))
            for number, (name, size) in enumerate(files):
                kind = "video/mp2t" if name.endswith(".ts") else "application/binary"
                self.assertTrue(stream.follows(assets.file_head(boundary, kind, number, size)), name)
                with open(self.state(name), "rb") as file:
                    self.assertTrue(stream.file_follows(file, watch), name)
                end = b"\r\n\r\n" if number == len(files) - 1 else b"\r\n"
                self.assertTrue(stream.follows(end), name)
            self.assertEqual(assets.closing(boundary), stream.rest())
            stream.close()
        return time.monotonic() - begin, most[0]

    def file_changes_while_it_is_sent(self, size, change):
        """Of a file that is longer than what sockets hold: after the first MiB.

        @return how many bytes of the file came, and what came behind them."""
        data = self.random.randbytes(1 << 20) * (size >> 20)
        self.write_file("change/film.ts", data)
        element = self.load("change", "change/", "<Film src='film.ts' ID='f'/>")
        with self.client.connect(60) as connection:
            connection.sendall(post(ask_for("<Asset name='Film' />")))
            stream = Stream(connection)
            self.assertTrue(stream.follows(assets.text_part(stream.boundary, contents(
                "type='asset' name='Film'", "<Film src='film.ts' ID='f'/>"))), element)
            self.assertTrue(stream.follows(
                assets.file_head(stream.boundary, "video/mp2t", "f", size)))
            self.assertTrue(stream.follows(data[:1 << 20]))
            change(self.state("change/film.ts"))
            rest = stream.rest()
            stream.close()
        came = min(len(rest), size - (1 << 20))
        self.assertTrue(rest[:came] == data[1 << 20:][:came], "other bytes than the file had")
        self.unload("change")
        self.expect_picture()
        self.expect_back()
        return came + (1 << 20), rest[came:]

    def slow_clients(self, count, rounds, pause):
        """Each sends a byte and waits; who is shut out comes again. Others get their file."""
        resource.setrlimit(resource.RLIMIT_NOFILE, (count + 1000, count + 1000))
        slow = [None] * count
        slowest = 0.0
        try:
            for turn in range(rounds):
                shut_out = sum(self.send_byte(slow, number) for number in range(count))
                end = time.monotonic() + pause
                while True:
                    slowest = max(slowest, self.expect_picture())
                    if time.monotonic() > end:
                        break
                    time.sleep(min(0.5, pause / 5))
                print(f"\n  turn {turn}: {self.connections()} connections, {self.threads()} "
                      f"threads, {shut_out} came anew, file {slowest:.3f} s", flush=True)
                self.assertLessEqual(self.connections(), CONNECTIONS)
                self.assertLessEqual(self.threads(), CONNECTIONS + SPARE)
            self.assertLess(slowest, 5 * PATIENCE)
            self.ends_in_order()
        finally:
            for each in slow:
                if each is not None:
                    each.close()

    def send_byte(self, slow, number):
        """@return whether it had to connect, not being there or not any more."""
        if slow[number] is not None:
            try:
                slow[number].sendall(b"A")
                slow[number].settimeout(0)
                try:
                    gone = slow[number].recv(1) == b""
                except BlockingIOError:
                    gone = False
                if not gone:
                    return False
            except OSError:
                pass
            slow[number].close()
        time.sleep(0.002)  # more at once than a set takes are connected a second later
        slow[number] = self.client.connect(30)
        slow[number].sendall(b"P")
        return True

    def many_requests(self, count, at_a_time, spare=SPARE):
        """In a row, so many at a time; each answer is compared."""
        self.requests_by_threads(count // 10, at_a_time)
        self.expect_back(spare)
        self.before = self.resources()
        begin = time.monotonic()
        slowest = self.requests_by_threads(count, at_a_time)
        seconds = time.monotonic() - begin
        self.expect_back(spare)
        after = self.resources()
        print(f"\n  {count} requests in {seconds:.1f} s, {count / seconds:.0f} a second, the slowest "
              f"{slowest:.3f} s; before {self.before}, after {after}", flush=True)
        self.expect_back(spare, 1024)

    def requests_by_threads(self, count, at_a_time):
        """@return the seconds of the slowest."""
        failures, slowest = [], []
        threads = [threading.Thread(target=self.requests, args=(share, failures, slowest))
                   for share in shares(count, at_a_time)]
        for each in threads:
            each.start()
        for each in threads:
            each.join()
        self.assertEqual([], failures[:3])
        return max(slowest)

    def requests(self, count, failures, slowest):
        most = 0.0
        with Visit(self.client.there):
            for _ in range(count):
                begin = time.monotonic()
                try:
                    self.one_request()
                except (OSError, AssertionError) as error:
                    failures.append(error)
                most = max(most, time.monotonic() - begin)
        slowest.append(most)

    def one_request(self):
        with socket.create_connection((self.address, assets.PORT), 60) as connection:
            connection.sendall(assets.GET)
            self.expect_answer(assets.all_of(connection), OF_GET, self.picture)


def shares(count, of):
    return [count // of + (number < count % of) for number in range(of)]
