#include "zelv/platform/TraceScope.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "zelv/platform/fake/FakeLog.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Zelv::Platform::Fake::LogCapture;

void throwInScope() {
  TraceScope const trace("Class::operation");
  throw std::runtime_error("out");
}

TEST(TraceScope, WritesALineAtItsBeginningAndOneAtItsEnd) {
  LogCapture log;
  {
    TraceScope const trace("Class::operation");
    EXPECT_THAT(log.texts(PCRealDebug::Trace), ElementsAre("Class::operation: Entry."));
  }
  EXPECT_THAT(log.texts(PCRealDebug::Trace),
              ElementsAre("Class::operation: Entry.", "Class::operation: Exit."));
}

TEST(TraceScope, WritesTheLastLineAlsoWhenAnExceptionLeavesTheScope) {
  LogCapture log;
  EXPECT_THROW(throwInScope(), std::runtime_error);
  EXPECT_TRUE(log.has(PCRealDebug::Trace, "Class::operation: Exit."));
}

TEST(TraceScope, WritesNothingWhenNobodyListensToTraces) {
  LogCapture log;
  PCRealDebug::SetLevel(PCRealDebug::Detail);
  { TraceScope const trace("Class::operation"); }
  EXPECT_THAT(log.lines(), IsEmpty());
}

}  // namespace
