#include "apps/zelv-tv/Options.h"

#include <gtest/gtest.h>

#include <vector>

namespace ZelvTv {
namespace {

struct Parsed {
  std::optional<Options> options;
  int status = -1;
  std::string error;
};

Parsed parse(std::vector<char const*> aArguments) {
  aArguments.insert(aArguments.begin(), "zelv-tv");
  Parsed parsed;
  testing::internal::CaptureStderr();
  parsed.options =
      Options::Parse(static_cast<int>(aArguments.size()), aArguments.data(), parsed.status);
  parsed.error = testing::internal::GetCapturedStderr();
  return parsed;
}

TEST(OptionsTest, LeavesTheNameAsItIsUnlessOneIsGiven) {
  EXPECT_EQ(parse({}).options.value().name, "");
  EXPECT_EQ(parse({"--name", "Tom's TV > all"}).options.value().name, "Tom's TV > all");
}

TEST(OptionsTest, RefusesANameThatOtherDevicesCouldNotRead) {
  std::string const longest(128, 'x');
  std::string const tooLong = longest + "x";
  EXPECT_EQ(parse({"--name", longest.c_str()}).options.value().name, longest);
  for (char const* name : {"", "Tom <3", "Tom & Ann", "a\nb", "\x7f", tooLong.c_str()}) {
    Parsed const parsed = parse({"--name", name});
    EXPECT_FALSE(parsed.options) << name;
    EXPECT_EQ(parsed.status, 2) << name;
    EXPECT_EQ(parsed.error.rfind("zelv-tv: --name: a name h", 0), 0U) << parsed.error;
    EXPECT_EQ(parsed.error.find('\n'), parsed.error.size() - 1) << parsed.error;
  }
}

}  // namespace
}  // namespace ZelvTv
