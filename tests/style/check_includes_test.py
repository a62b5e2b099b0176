#!/usr/bin/env python3
"""The include check itself: it must find what it is for, and leave the rest alone."""

import pathlib
import tempfile
import unittest

import check_includes


class CheckIncludes(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        self.exceptions = check_includes.EXCEPTIONS
        check_includes.EXCEPTIONS = {}
        self.write("zelv/platform/PCMutex.h", "#include <semaphore.h>\n")
        self.write("zelv/platform/fake/Clock.h", "")
        self.write("zelv/infrastructure/GUID.h", '#include "zelv/platform/PCMutex.h"\n')
        self.write("zelv/controller/Timer.h", '#include "zelv/infrastructure/GUID.h"\n')

    def tearDown(self):
        check_includes.EXCEPTIONS = self.exceptions

    def write(self, path, text):
        file = self.root / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")

    def faults(self):
        return check_includes.check(self.root)[1]

    def assert_one_fault(self, text):
        faults = self.faults()
        self.assertEqual(len(faults), 1, faults)
        self.assertIn(text, faults[0])

    def test_layers_downwards_are_allowed(self):
        self.assertEqual(self.faults(), [])

    def test_a_layer_upwards_is_found(self):
        self.write("zelv/infrastructure/XPath.cpp", '\n#include "zelv/controller/Timer.h"\n')
        self.assert_one_fault('XPath.cpp:2: "zelv/controller/Timer.h" is not allowed here')

    def test_an_interface_sees_no_more_than_identifiers(self):
        self.write("zelv/interfaces/IBase.h", '#include "zelv/platform/PCMutex.h"\n')
        self.assert_one_fault("not allowed here")

    def test_an_os_header_outside_the_platform_is_found(self):
        self.write("zelv/core/Core.cpp", "#include <sys/stat.h>\n")
        self.assert_one_fault("<sys/stat.h> belongs to an operating system")

    def test_a_fake_is_for_unit_tests_alone(self):
        self.write("zelv/controller/Timer_test.cpp", '#include "zelv/platform/fake/Clock.h"\n')
        self.assertEqual(self.faults(), [])
        self.write("zelv/controller/Timer.cpp", '#include "zelv/platform/fake/Clock.h"\n')
        self.assert_one_fault("Timer.cpp:1")

    def test_a_header_not_written_from_the_root_is_found(self):
        self.write("zelv/core/Core.cpp", '#include "Core.h"\n')
        self.assert_one_fault("written from the root")

    def test_a_header_that_is_not_there_is_found(self):
        self.write("zelv/core/Core.cpp", '#include "zelv/core/Core.h"\n')
        self.assert_one_fault("does not exist")

    def test_an_exception_counts_by_name_and_must_be_needed(self):
        path = "zelv/infrastructure/XPath.cpp"
        check_includes.EXCEPTIONS = {(path, "zelv/controller/Timer.h"): "for this test"}
        self.write(path, '#include "zelv/controller/Timer.h"\n')
        self.assertEqual(self.faults(), [])
        self.write(path, "")
        self.assert_one_fault("not needed any more")


if __name__ == "__main__":
    unittest.main()
