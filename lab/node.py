"""One set or phone: its process, what it prints, what it is told."""

import errno
import os
import re
import shutil
import signal
import subprocess
import time

from lab.processes import Process

END_SECONDS = 6


class NodeError(RuntimeError):
    pass


class Node:
    def __init__(self, name, address, directory, at):
        self.name = name
        self.address = address
        self.directory = directory
        self.at = at
        self.process = None

    @property
    def is_set(self):
        return self.name.startswith("tv")

    def path(self, name):
        return os.path.join(self.directory, name)

    def start(self, command):
        """Its prompt is a pipe in the file system that stays open while the process lives."""
        if self.is_running():
            raise NodeError(f"{self.name} runs already")
        os.makedirs(self.directory, exist_ok=True)
        if not os.path.exists(self.path("prompt")):
            os.mkfifo(self.path("prompt"))
        prompt = os.open(self.path("prompt"), os.O_RDWR)
        try:
            with open(self.path("out"), "wb") as out, open(self.path("log"), "wb") as log:
                child = subprocess.Popen(self.at + command, stdin=prompt, stdout=out, stderr=log,
                                         start_new_session=True)
        finally:
            os.close(prompt)
        child.returncode = 0  # it is waited for here, by number
        self.process = Process(child.pid)

    def is_running(self):
        return self.process is not None and self.process.is_alive()

    def end(self, number=signal.SIGTERM):
        """@return the seconds that it took."""
        if not self.is_running():
            raise NodeError(f"{self.name} does not run")
        begin = time.monotonic()
        self.process.signal(number)
        if not self.process.wait(END_SECONDS):
            raise NodeError(f"{self.name} does not end")
        self.process = None
        return time.monotonic() - begin

    def forget(self):
        """Its files; the next start is as the first. It must not run."""
        shutil.rmtree(self.directory, ignore_errors=True)

    def say(self, line):
        try:
            prompt = os.open(self.path("prompt"), os.O_WRONLY | os.O_NONBLOCK)
        except OSError as error:
            if error.errno not in (errno.ENXIO, errno.ENOENT):
                raise
            raise NodeError(f"{self.name} does not run") from error
        try:
            os.write(prompt, line.encode() + b"\n")
        finally:
            os.close(prompt)

    def say_all(self, lines):
        """Many lines at once; waits while the prompt is full."""
        with open(self.path("prompt"), "wb") as prompt:
            for line in lines:
                prompt.write(line.encode() + b"\n")

    def read(self, name="out"):
        """What it has printed: "out", or "log" for the other stream."""
        try:
            with open(self.path(name), encoding="utf-8", errors="replace") as text:
                return text.read()
        except FileNotFoundError:
            return ""

    def lines(self, since=0):
        """Whole lines of its output, the first `since` of them left away."""
        return self.read().split("\n")[:-1][since:]

    def wait_for(self, prefix, since=0, seconds=30):
        """@return the first line behind `since` that begins so."""
        deadline = time.monotonic() + seconds
        while True:
            running = self.is_running()
            for line in self.lines(since):
                if line.startswith(prefix):
                    return line
            if not running or time.monotonic() > deadline:
                raise NodeError(f"{self.name} does not print '{prefix}':\n{self.read()}"
                                f"{self.read('log')[-4000:]}")
            time.sleep(0.01)

    def ask(self, path, seconds=10):
        """What a read of the path gives, None when it fails."""
        since = len(self.lines())
        self.say("get " + path)
        identifier = None
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            for line in self.lines(since):
                # Commands that were typed before may still be queued, and say so in the same way.
                if identifier is None and re.fullmatch(f"queued [^ ]+ {re.escape(path)}", line):
                    identifier = line.split(" ")[1]
                if line == f"failed {identifier}":
                    return None
                if line.startswith(f"data {identifier} "):
                    return line[len(f"data {identifier} {path} "):]
            time.sleep(0.01)
        raise NodeError(f"{self.name} does not answer 'get {path}'")

    def write(self, path, value):
        """Asks for a write; a later read sees it."""
        since = len(self.lines())
        self.say(f"set {path} {value}")
        self.wait_for("queued ", since)

    def identifier(self):
        """The device ID, of a set that is ready."""
        return self.wait_for("ready ").split(" ")[1]
