"""Fetches assets of a set over HTTP as a phone does, and knows each byte of the answer, without a line
of the library."""

import email
import re
import socket

from lab.alone import Visit

PORT = 4450
SECONDS = 10
BAD_REQUEST = (b"HTTP/1.1 400 Bad Request\r\nContent-Type: text/xml; charset=utf-8\r\n"
               b"Content-Length: 52\r\nConnection: close\r\n\r\n"
               b'<?xml version="1.0"?>\n<error>400 Bad Request</error>')
GET = b"GET / HTTP/1.1\r\nHost: tv\r\n\r\n"

# What is asked

def envelope(request):
    return f"<Envelope><Header /><Body>{request}</Body></Envelope>"


def ask_for(things, identifier="7"):
    """@param things  elements Package and Asset."""
    return envelope(f"<AssetRequest ID='{identifier}'>{things}</AssetRequest>")


def post(text, *lines):
    """The bytes of a POST; with lines, these stand in the place of the usual headers."""
    body = text if isinstance(text, bytes) else text.encode()
    lines = lines or ("Host: tv", "Content-Type: text/xml", f"Content-Length: {len(body)}")
    return "\r\n".join(("POST / HTTP/1.1", *lines, "", "")).encode() + body


# What is answered

def head(boundary):
    return (f"HTTP/1.1 202 Accepted\r\nContent-Type: multipart/related; boundry={boundary}\r\n"
            "Connection: close\r\n\r\n").encode()


def text_part(boundary, text):
    return (f"--{boundary}\r\nContent-Type: application/soap+xml; charset=utf-8\r\n"
            f"Content-ID: AssetContents\r\n\r\n{text}\r\n").encode()


def file_head(boundary, kind, identifier, size):
    return (f"--{boundary}\r\nContent-Type: {kind}\r\nContent-Transfer-Encoding: Little-Endian\r\n"
            f"Content-ID: {identifier}\r\nContent-Length: {size}\r\n\r\n").encode()


def closing(boundary):
    return f"--{boundary}--\r\n".encode()


def contents(tag, found, identifier="7"):
    return (f"<RequestContents requestID='{identifier}'><AssetContents {tag} >{found}"
            "</AssetContents></RequestContents>")


def boundary_of(answer):
    """None when there is none."""
    found = re.search(rb"; boundry=([0-9a-f-]{36})\r\n", answer)
    return found and found.group(1).decode()


def answer_of(boundary, *parts):
    """The whole of it. A part is a text or a file: (type, ID, bytes); what ends the last file of the
    answer is longer."""
    pieces = [head(boundary)]
    for number, part in enumerate(parts, 1):
        if isinstance(part, str):
            pieces.append(text_part(boundary, part))
            continue
        kind, identifier, data = part
        end = b"\r\n\r\n" if number == len(parts) else b"\r\n"
        pieces += [file_head(boundary, kind, identifier, len(data)), data, end]
    return b"".join([*pieces, closing(boundary)])


def read_by_email(answer):
    """Taken apart by a reader that knows nothing of sets but how they spell the boundary.

    @return the parts as (type, ID, bytes); bytes are as many as the part announces.
    """
    rest = answer.partition(b"\r\n")[2].replace(b"; boundry=", b"; boundary=", 1)
    message = email.message_from_bytes(rest)
    found = []
    for part in message.get_payload():
        data = part.get_payload(decode=True)
        if part["Content-Length"] is not None:
            data = data[:int(part["Content-Length"])]
        found.append((part.get_content_type(), part["Content-ID"], data))
    return found


class Client:
    """Connects from a node to the assets of a set."""

    def __init__(self, node, network, address):
        self.there = network.namespace(node.name)
        self.address = address

    def connect(self, seconds=SECONDS):
        with Visit(self.there):
            connection = socket.socket(socket.AF_INET, socket.SOCK_STREAM)
        connection.settimeout(seconds)
        try:
            connection.connect((self.address, PORT))
        except OSError:
            connection.close()
            raise
        return connection

    def exchange(self, request, seconds=SECONDS):
        """@return all bytes up to the end of the connection."""
        with self.connect(seconds) as connection:
            connection.sendall(request)
            return all_of(connection)


def all_of(connection):
    pieces = []
    while piece := connection.recv(1 << 18):
        pieces.append(piece)
    return b"".join(pieces)


class Stream:
    """An answer too large to be held: compared while it comes."""

    def __init__(self, connection):
        self.bytes = connection.makefile("rb", 1 << 20)
        read = b""
        while not read.endswith(b"\r\n\r\n"):
            line = self.bytes.readline()
            if not line:
                raise EOFError(f"no head: {read!r}")
            read += line
        self.head = read
        self.boundary = boundary_of(read)

    def close(self):
        self.bytes.close()

    def follows(self, expected):
        return self.bytes.read(len(expected)) == expected

    def file_follows(self, file, meanwhile=lambda: None):
        """Its bytes, from where it stands to its end."""
        while piece := file.read(1 << 20):
            if not self.follows(piece):
                return False
            meanwhile()
        return True

    def rest(self):
        return self.bytes.read()
