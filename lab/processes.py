"""Processes that were started here, found again by number and start, so that no other is ever ended."""

import os
import signal
import time


def fields(pid):
    """What /proc/PID/stat says behind the program's name; empty when there is no such process."""
    try:
        with open(f"/proc/{pid}/stat", encoding="ascii", errors="replace") as text:
            return text.read().rpartition(")")[2].split()
    except OSError:
        return []


class Process:
    def __init__(self, pid, started=None):
        self.pid = pid
        self.started = started or self._start()
        self.exit_status = None  # once it has ended, of a child of this program

    def _start(self):
        found = fields(self.pid)
        return found[19] if found else None

    def noted(self):
        return [self.pid, self.started]

    def is_alive(self):
        if self.exit_status is not None:
            return False
        try:
            # A child has ended when it says so: its first thread is a zombie some time before.
            pid, status = os.waitpid(self.pid, os.WNOHANG)
            self.exit_status = os.waitstatus_to_exitcode(status) if pid else None
            return not pid
        except ChildProcessError:  # it is another's child, or it is gone
            found = fields(self.pid)
            return bool(found) and found[19] == self.started and found[0] not in "ZX"

    def signal(self, number):
        if self.is_alive():
            os.kill(self.pid, number)

    def wait(self, seconds):
        """@return whether it has ended within the time."""
        deadline = time.monotonic() + seconds
        while self.is_alive():
            if time.monotonic() > deadline:
                return False
            time.sleep(0.005)
        return True

    def processor_nanoseconds(self):
        """Of all threads that there are at the moment."""
        spent = 0
        for task in os.listdir(f"/proc/{self.pid}/task"):
            with open(f"/proc/{self.pid}/task/{task}/schedstat", encoding="ascii") as text:
                spent += int(text.read().split()[0])
        return spent

    def status(self, name):
        """A number of /proc/PID/status: "VmRSS" in KiB, "Threads"."""
        with open(f"/proc/{self.pid}/status", encoding="ascii", errors="replace") as text:
            for line in text:
                if line.startswith(name + ":"):
                    return int(line.split()[1])
        raise KeyError(name)

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.pid}/fd"))


def end_all(processes, seconds):
    """Asks all to end, and ends those that have not after the time."""
    for number in (signal.SIGTERM, signal.SIGKILL):
        for process in processes:
            process.signal(number)
        deadline = time.monotonic() + seconds
        for process in processes:
            process.wait(max(0.0, deadline - time.monotonic()))
