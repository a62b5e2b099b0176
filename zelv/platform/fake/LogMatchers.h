#pragma once

#include <gmock/gmock.h>

#include "zelv/platform/fake/FakeLog.h"

namespace Zelv::Platform::Fake {

/// EXPECT_THAT(log, Logged(PCRealDebug::Error, "Class::op: text")); the text may be a matcher. The
/// message of a failure shows the whole log.
MATCHER_P2(Logged, aLevel, aText, "holds the expected line") {
  for (LogLine const& line : arg.lines()) {
    if (line.level == static_cast<unsigned long>(aLevel) &&
        ::testing::Matches(::testing::Matcher<std::string>(aText))(line.text)) {
      return true;
    }
  }
  *result_listener << "the log:\n" << arg.dump();
  return false;
}

}  // namespace Zelv::Platform::Fake
