"""The network of a home: a namespace for each node and one, "lan", in which their cables meet."""

import json
import os
import subprocess
import time

SETTLE_SECONDS = 20


class NetworkError(RuntimeError):
    pass


def ip(*arguments, lines=None):
    """Runs `ip`; with lines, those are its commands."""
    command = ["ip"] + list(arguments) + (["-batch", "-"] if lines else [])
    done = subprocess.run(command, input="\n".join(lines) if lines else "", text=True, check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    if done.returncode != 0:
        raise NetworkError(f"{' '.join(command)}: {done.stdout.strip()}")
    return done.stdout


def address(number):
    return f"10.77.{number // 250}.{number % 250 + 1}"


def hardware_address(address_of_node):
    return "02:00:" + ":".join(f"{int(part):02x}" for part in address_of_node.split("."))


class Network:
    def __init__(self, home):
        self.home = home

    def namespace(self, node):
        return f"zelv-{self.home}-{node}"

    def at(self, node):
        """What stands before a command that is to run at the node; it becomes that command."""
        return ["nsenter", "--net=" + os.path.join("/run/netns", self.namespace(node)), "--"]

    def build(self, nodes, bridged):
        """@param nodes  name to address. Without a bridge the cables' ends in "lan", named after
        the nodes, are left for lab/wire."""
        lan = self.namespace("lan")
        ip(lines=[f"netns add {self.namespace(node)}" for node in ["lan", *nodes]])
        ip(lines=[f"link add name eth0 netns {self.namespace(node)} address {hardware_address(own)} "
                  f"type veth peer name {node} netns {lan}" for node, own in nodes.items()])
        for node, own in nodes.items():
            # The neighbours stand fixed: what nodes learn goes into one table of the whole machine,
            # which is full at a thousand entries, and then nothing is sent any more.
            ip("-n", self.namespace(node), lines=[
                "link set lo up", f"addr add {own}/16 broadcast 10.77.255.255 dev eth0",
                "link set eth0 up", "route add 224.0.0.0/4 dev eth0"] +
               [f"neigh replace {other} lladdr {hardware_address(other)} nud permanent dev eth0"
                for other in nodes.values() if other != own])
        ends = [f"link set {node} up" for node in nodes]
        if bridged:
            ends = (["link add bridge0 type bridge mcast_snooping 0", "link set bridge0 up"] +
                    [f"link set {node} master bridge0" for node in nodes] + ends)
        ip("-n", lan, lines=ends)
        self._settle(nodes, bridged)

    def _settle(self, nodes, bridged):
        """The kernel lets a new cable carry something up to a second after it was asked to."""
        deadline = time.monotonic() + SETTLE_SECONDS
        waiting = {"lan": nodes, **{node: ["eth0"] for node in nodes}}
        while waiting:
            waiting = {node: ends for node, ends in waiting.items()
                       if not self._carries(node, ends, bridged)}
            if waiting and time.monotonic() > deadline:
                raise NetworkError(f"the cables of {', '.join(waiting)} stay dead")
            time.sleep(0.02 if waiting else 0)

    def _carries(self, node, ends, bridged):
        links = {link["ifname"]: link for link in
                 json.loads(ip("-n", self.namespace(node), "-d", "-j", "link"))}
        if node == "lan" and bridged:
            return all(links[end]["linkinfo"].get("info_slave_data", {}).get("state") ==
                       "forwarding" for end in ends)
        return all(links[end]["operstate"] == "UP" for end in ends)

    def remove(self, nodes):
        """Also what is there in part only."""
        for node in [*nodes, "lan"]:
            if os.path.exists(os.path.join("/run/netns", self.namespace(node))):
                subprocess.run(["ip", "netns", "delete", self.namespace(node)], check=False,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
