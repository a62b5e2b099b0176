"""Goes on in namespaces of one's own, in which everybody may build networks, and which take all that
is in them along when they end, however they end."""

import ctypes
import os
import subprocess
import sys

MARK = "ZELV_LAB_ALONE"
LIBC = ctypes.CDLL(None, use_errno=True)
CLONE_NEWNET = 0x40000000


def is_alone():
    """The first process of its namespace; programs started from it have the mark, but not the number."""
    return MARK in os.environ and os.getpid() == 1


def enter():
    """Starts this program anew in its own user (unless root), network, mount and process namespaces.

    The processes in there end with it, also when it is killed, and with the last of them go the
    networks and the files below /run.
    """
    if is_alone():
        settle()
        return
    command = ["unshare", "--net", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc"]
    if os.geteuid() != 0:
        command += ["--user", "--map-root-user"]
    os.environ[MARK] = "1"
    os.execvp(command[0], command + [sys.executable, "-B"] + sys.argv)


def settle():
    subprocess.run(["mount", "-t", "tmpfs", "zelv", "/run"], check=True)
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True)


class Visit:
    """`with Visit(namespace):` sockets made inside belong to that network namespace and stay there.

    Of the calling thread only.
    """

    def __init__(self, namespace):
        self.there = os.path.join("/run/netns", namespace)

    def __enter__(self):
        self.back = os.open("/proc/self/ns/net", os.O_RDONLY | os.O_CLOEXEC)
        there = os.open(self.there, os.O_RDONLY | os.O_CLOEXEC)
        try:
            move(there)
        finally:
            os.close(there)

    def __exit__(self, *_):
        move(self.back)
        os.close(self.back)


def move(descriptor):
    if LIBC.setns(descriptor, CLONE_NEWNET) != 0:
        number = ctypes.get_errno()
        raise OSError(number, os.strerror(number))
