#!/usr/bin/env python3
"""200,000 messages in a row through one listener on TCP leave memory, threads and descriptors flat.

usage: ZELV_BUILD=build-release tests/long/messages.py
"""

import os
import sys

TEST = "HostileTransport.ThousandsOfMessagesLeaveMemoryThreadsAndDescriptorsFlat"


def main():
    program = os.path.join(os.environ.get("ZELV_BUILD", "build-release"), "tests",
                           "transport_tests")
    os.environ["ZELV_TEST_MESSAGES"] = "200000"
    os.execv(program, [program, "--gtest_filter=" + TEST])


if __name__ == "__main__":
    sys.exit(main())
