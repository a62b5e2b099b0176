#!/usr/bin/env python3
"""Checks who includes whom against one allow-list, and that the operating system's headers stay
below zelv/platform. usage: check_includes.py ROOT"""

import fnmatch
import pathlib
import re
import sys

# The layers. A folder may include what stands here; the longest matching folder counts. "*" stays
# within one folder, "**" goes below it too.
ALLOWED = {
    "zelv/platform": ["zelv/platform/*.h"],
    "zelv/platform/linux": ["zelv/platform/*.h", "zelv/platform/linux/*.h"],
    # The fakes stand in for single files of the host's platform and keep the rest of it.
    "zelv/platform/fake": [
        "zelv/platform/*.h",
        "zelv/platform/linux/*.h",
        "zelv/platform/fake/*.h",
    ],
    "zelv/infrastructure": ["zelv/infrastructure/*.h", "zelv/platform/*.h"],
    "zelv/interfaces": [
        "zelv/interfaces/*.h",
        "zelv/infrastructure/GUID.h",
        "zelv/platform/Export.h",
    ],
    "zelv/adapter": [
        "zelv/adapter/*.h",
        "zelv/interfaces/*.h",
        "zelv/infrastructure/*.h",
        "zelv/platform/*.h",
    ],
    "zelv/controller": [
        "zelv/controller/*.h",
        "zelv/adapter/*.h",
        "zelv/interfaces/*.h",
        "zelv/infrastructure/*.h",
        "zelv/platform/*.h",
    ],
    "zelv/core": [
        "zelv/core/*.h",
        "zelv/controller/*.h",
        "zelv/adapter/*.h",
        "zelv/interfaces/*.h",
        "zelv/infrastructure/*.h",
        "zelv/platform/*.h",
    ],
    # The one header that shows all of the interfaces.
    "zelv": ["zelv/interfaces/*.h"],
    # A program sees what is installed, and itself.
    "apps": [
        "apps/**",
        "zelv/Zelv.h",
        "zelv/interfaces/*.h",
        "zelv/infrastructure/*.h",
        "zelv/platform/Directories.h",
        "zelv/platform/PCRealDebug.h",
        # A program says what set it is: its product code stands in for the set's own.
        "zelv/platform/TCTv.h",
    ],
    # A phone shares the transport and the XML classes with the sets, and nothing else.
    "apps/zelvctl": [
        "apps/**",
        "zelv/adapter/*.h",
        "zelv/infrastructure/*.h",
        "zelv/interfaces/NetworkMessageCallback.h",
        "zelv/platform/PCRealDebug.h",
    ],
    "lab": ["lab/**"],
    "tests": ["tests/**", "zelv/**"],
    "bench": ["bench/**", "zelv/**"],
    # What others send to a phone is as strange as what they send to a set.
    "fuzz": ["fuzz/**", "zelv/**", "apps/zelvctl/**"],
}

# What a unit test beside its class, and what tests share in the folders named testing, may include
# on top: the fakes that they steer, and those folders.
ALLOWED_IN_UNIT_TESTS = ["zelv/platform/fake/*.h", "zelv/*/testing/*.h"]

# Exceptions by name, each with its reason. One that is no longer needed fails the check.
EXCEPTIONS = {
    (
        "zelv/controller/EnvironmentController.cpp",
        "zelv/core/AssetProvider.h",
    ): "the place that creates the standard components, which live in the core",
    (
        "zelv/controller/EnvironmentController.cpp",
        "zelv/core/GenericDataProvider.h",
    ): "the place that creates the standard components, which live in the core",
    (
        "zelv/controller/EnvironmentController.cpp",
        "zelv/core/MultiAccount.h",
    ): "the place that creates the standard components, which live in the core",
    (
        "zelv/controller/EnvironmentController.cpp",
        "zelv/core/MultiDevice.h",
    ): "the place that creates the standard components, which live in the core",
}

# Headers that only an operating system has.
SYSTEM = re.compile(
    r"^(unistd|fcntl|pthread|semaphore|sched|poll|spawn|dirent|dlfcn|termios|ifaddrs|netdb|signal|"
    r"syslog|pwd|grp|libgen|mqueue|aio|ftw|glob|ucontext)\.h$|^(sys|net|netinet|arpa|linux|asm)/"
)
SYSTEM_ALLOWED = ("zelv/platform/", "apps/", "lab/", "tests/", "bench/")

FOLDERS = ("zelv", "apps", "lab", "tests", "bench", "fuzz")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^">]+)[">]', re.MULTILINE)


def covers(rule, target):
    if rule.endswith("/**"):
        return target.startswith(rule[:-2])
    return fnmatch.fnmatchcase(target, rule) and target.count("/") == rule.count("/")


def rules_for(path):
    folder = path.rpartition("/")[0]
    while folder and folder not in ALLOWED:
        folder = folder.rpartition("/")[0]
    rules = list(ALLOWED.get(folder, []))
    if path.startswith("zelv/") and (path.endswith("_test.cpp") or "/testing/" in path):
        rules += ALLOWED_IN_UNIT_TESTS
    return rules


def faults_of(path, text, known, used):
    """Yields a line for each include of this file that is not allowed."""
    for match in INCLUDE.finditer(text):
        quoted, target = match.group(1) == '"', match.group(2)
        line = text.count("\n", 0, match.start(2)) + 1
        where = f"{path}:{line}: "
        if SYSTEM.match(target):
            if not path.startswith(SYSTEM_ALLOWED):
                yield where + f"<{target}> belongs to an operating system; use zelv/platform"
            continue
        ours = target.startswith(tuple(folder + "/" for folder in FOLDERS))
        if not ours:
            if quoted:
                yield where + f'"{target}": own headers are written from the root'
            continue
        if not quoted:
            yield where + f"<{target}>: own headers are written in quotes"
        if target not in known:
            yield where + f'"{target}" does not exist'
        if (path, target) in EXCEPTIONS:
            used.add((path, target))
        elif not any(covers(rule, target) for rule in rules_for(path)):
            yield where + f'"{target}" is not allowed here'


def check(root):
    sources = {}
    for folder in FOLDERS:
        for file in sorted((root / folder).rglob("*")):
            if file.suffix in (".h", ".cpp"):
                sources[file.relative_to(root).as_posix()] = file
    # Programs outside the tree, kept here to be tried.
    sources = {p: f for p, f in sources.items() if not p.startswith("tests/package/")}
    used = set()
    faults = []
    for path, file in sources.items():
        faults += faults_of(path, file.read_text(encoding="utf-8"), sources, used)
    for exception in sorted(set(EXCEPTIONS) - used):
        faults.append(f"{exception[0]}: the exception for {exception[1]} is not needed any more")
    return len(sources), faults


def main():
    count, faults = check(pathlib.Path(sys.argv[1]).resolve())
    for fault in faults:
        print(fault)
    print(f"{count} files, {len(faults)} includes that break the layers")
    return 1 if faults or count == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
