"""A home as a whole: put up, noted in a file for later calls, taken away."""

import json
import os
import shutil
import signal
import subprocess
import time

from lab.network import Network, address
from lab.node import Node
from lab.processes import Process, end_all

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
START_SECONDS = 60
END_SECONDS = 6


class HomeError(RuntimeError):
    pass


def default_build():
    for name in ("build-run", "build-release", "build-dev"):
        if os.path.exists(os.path.join(ROOT, name, "apps", "zelv-tv", "zelv-tv")):
            return os.path.join(ROOT, name)
    return os.path.join(ROOT, "build-run")


class Home:
    """With `with`, whatever happens inside, nothing of it is left."""

    def __init__(self, name="home"):
        self.name = name
        self.directory = os.path.join("/run", "zelv-" + name)
        self.network = Network(name)
        self.nodes = {}
        self.wire = None
        self.build = default_build()
        self.interval = 10
        self.log = "warning"

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.down()

    # What is noted is noted before it is made, so that `down` finds all of it.

    @property
    def file(self):
        return os.path.join(self.directory, "home.json")

    def is_up(self):
        return os.path.exists(self.directory)

    def note(self):
        noted = {"build": self.build, "interval": self.interval, "log": self.log,
                 "wire": self.wire.noted() if self.wire else None,
                 "nodes": {node.name: [node.address, node.process and node.process.noted()]
                           for node in self.nodes.values()}}
        with open(self.file + ".tmp", "w", encoding="utf-8") as text:
            json.dump(noted, text)
        os.replace(self.file + ".tmp", self.file)

    def load(self):
        """Finds again what an earlier call has put up."""
        if not os.path.exists(self.file):
            return self
        with open(self.file, encoding="utf-8") as text:
            noted = json.load(text)
        self.build, self.interval, self.log = noted["build"], noted["interval"], noted["log"]
        self.wire = noted["wire"] and Process(*noted["wire"])
        for name, (where, process) in noted["nodes"].items():
            self._add(name, where).process = process and Process(*process)
        return self

    def _add(self, name, where):
        node = Node(name, where, os.path.join(self.directory, name), self.network.at(name))
        self.nodes[name] = node
        return node

    # Up and down

    def up(self, tvs=2, phones=1, wire=None, start=True):
        """@param wire  options of lab/wire, which then joins the nodes in place of a bridge."""
        if self.is_up():
            raise HomeError(f"{self.name} is up already; `lab/home down` takes it away")
        try:
            self._build(tvs, phones, wire)
            if start:
                self.start_sets()
        except BaseException:
            self.down()
            raise
        return self

    def _build(self, tvs, phones, wire):
        names = ([f"tv{number + 1}" for number in range(tvs)] +
                 [f"phone{number + 1}" for number in range(phones)])
        os.makedirs(self.directory)
        for number, name in enumerate(names):
            self._add(name, address(number))
        self.note()
        self._factory_files()
        self.network.build({node.name: node.address for node in self.nodes.values()}, wire is None)
        if wire is not None:
            self._start_wire(wire.split())

    def _factory_files(self):
        """A copy with the heartbeat that was asked for."""
        directory = os.path.join(self.directory, "factory")
        shutil.copytree(os.path.join(ROOT, "data"), directory)
        path = os.path.join(directory, "Devices.xml")
        with open(path, encoding="utf-8") as text:
            before, _, rest = text.read().partition("<HeartBeatInterval>")
        rest = rest[rest.index("</HeartBeatInterval>"):]
        with open(path, "w", encoding="utf-8") as text:
            text.write(f"{before}<HeartBeatInterval>{self.interval}{rest}")

    def _start_wire(self, options):
        program = os.path.join(self.build, "lab", "wire")
        with open(os.path.join(self.directory, "wire.log"), "wb") as log:
            child = subprocess.Popen(self.network.at("lan") + [program] + options +
                                     list(self.nodes), stdin=subprocess.DEVNULL, stdout=log,
                                     stderr=subprocess.STDOUT, start_new_session=True)
        child.returncode = 0
        self.wire = Process(child.pid)
        self.note()
        self._wait_for_wire()

    def _wait_for_wire(self):
        deadline = time.monotonic() + START_SECONDS
        while "joined" not in self.wire_log():
            if not self.wire.is_alive() or time.monotonic() > deadline:
                raise HomeError("lab/wire does not start: " + self.wire_log())
            time.sleep(0.01)

    def wire_log(self):
        with open(os.path.join(self.directory, "wire.log"), encoding="utf-8") as log:
            return log.read()

    def down(self):
        """Takes all away, also what is there in part only. Not to be interrupted."""
        held = signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGINT, signal.SIGTERM})
        try:
            processes = [node.process for node in self.nodes.values() if node.process]
            end_all(processes + ([self.wire] if self.wire else []), END_SECONDS)
            self.network.remove(self.nodes)
            shutil.rmtree(self.directory, ignore_errors=True)
            self.nodes, self.wire = {}, None
        finally:
            signal.pthread_sigmask(signal.SIG_SETMASK, held)

    # Nodes

    def node(self, name):
        if name not in self.nodes:
            raise HomeError(f"there is no {name} in {self.name}")
        return self.nodes[name]

    @property
    def sets(self):
        return [node for node in self.nodes.values() if node.is_set]

    @property
    def phones(self):
        return [node for node in self.nodes.values() if not node.is_set]

    def command_of(self, node):
        apps = os.path.join(self.build, "apps")
        if node.is_set:
            return [os.path.join(apps, "zelv-tv", "zelv-tv"), "--data", node.path("state"),
                    "--factory", os.path.join(self.directory, "factory"), "--log", self.log,
                    "--name", node.name]
        return [os.path.join(apps, "zelvctl", "zelvctl"), "devices", "--watch", "--json",
                "--interval", str(self.interval), "--name", node.name, "--address", node.address]

    def start(self, *nodes):
        """Sets, or phones that stay and watch; all at once."""
        for node in nodes:
            node.start(self.command_of(node))
            self.note()

    def start_sets(self):
        """@return the moment at which the last one was ready."""
        self.start(*self.sets)
        for node in self.sets:
            node.wait_for("ready ", seconds=START_SECONDS)
        return time.monotonic()

    def end(self, node, number=signal.SIGTERM):
        seconds = node.end(number)
        self.note()
        return seconds
