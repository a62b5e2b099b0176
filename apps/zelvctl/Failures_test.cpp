#include "apps/zelvctl/Failures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace ZelvCtl {
namespace {

std::string raised(Failures const& aFailures, std::ostream& aErrors) {
  try {
    aFailures.raise(aErrors);
    return "";
  } catch (std::runtime_error const& error) {
    return error.what();
  }
}

TEST(Failures, AreNoneAtFirst) {
  Failures const failures;
  std::ostringstream errors;
  EXPECT_TRUE(failures.isEmpty());
  EXPECT_EQ(raised(failures, errors) + errors.str(), "");
}

TEST(Failures, HaveALineEachAndTheLastIsThrown) {
  Failures failures;
  failures.add("one");
  failures.add("t\x1bwo");
  failures.add("three");
  std::ostringstream errors;
  EXPECT_FALSE(failures.isEmpty());
  EXPECT_EQ(raised(failures, errors), "three");
  EXPECT_EQ(errors.str(), "zelvctl: one\nzelvctl: t?wo\n");
}

TEST(Failures, AreCountedBeyondAThousand) {
  Failures failures;
  for (std::size_t count = 0; count < Failures::MaxLines; ++count) {
    failures.add("x");
  }
  std::ostringstream errors;
  EXPECT_EQ(raised(failures, errors), "x");
  failures.add("x");
  failures.add("x");
  errors.str("");
  EXPECT_EQ(raised(failures, errors), "and 2 more");
  std::string const lines = errors.str();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'),
            static_cast<std::ptrdiff_t>(Failures::MaxLines));
}

}  // namespace
}  // namespace ZelvCtl
