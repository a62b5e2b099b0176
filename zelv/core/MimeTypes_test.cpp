#include "zelv/core/MimeTypes.h"

#include <gtest/gtest.h>

#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/FakeFiles.h"
#include "zelv/platform/fake/FakeShell.h"
#include "zelv/platform/fake/TemporaryDirectories.h"

namespace Zelv {
namespace {

using Platform::Fake::FakeClock;
using Platform::Fake::FakeFiles;
using Platform::Fake::FakeShell;

constexpr char const* cTypes =
    "<mimetypes><mime extension=\"png\">image/png</mime><mime extension=\"a b\">x/y</mime>"
    "<mime extension=\"none\"/></mimetypes>";

class MimeTypesTest : public ::testing::Test {
 protected:
  std::string typeOf(std::string const& aExtension) {
    std::string type = "before";
    result = types.find(aExtension, type);
    return type;
  }

  Platform::Fake::TemporaryDirectories directories;
  MimeTypes types;
  int result = 1;
};

TEST_F(MimeTypesTest, AreLookedUpByTheExtension) {
  directories.putWritable("Mime.xml", cTypes);
  ASSERT_TRUE(types.load());
  EXPECT_EQ(typeOf("png"), "image/png");
  EXPECT_EQ(result, 0);
  EXPECT_EQ(typeOf("a b"), "x/y");
}

TEST_F(MimeTypesTest, AreUnknownForOtherExtensions) {
  directories.putWritable("Mime.xml", cTypes);
  ASSERT_TRUE(types.load());
  for (std::string const extension : {"jpg", "PNG", "", "b/c"}) {
    EXPECT_EQ(typeOf(extension), "") << extension;
    EXPECT_EQ(result, -1) << extension;
  }
}

TEST_F(MimeTypesTest, TakeNoExpressionForAnExtension) {
  directories.putWritable("Mime.xml", cTypes);
  ASSERT_TRUE(types.load());
  EXPECT_EQ(typeOf("x\" or @extension=\"png"), "");
  EXPECT_EQ(result, -1);
  EXPECT_EQ(typeOf("x\"]|/mimetypes/mime[@extension=\"png"), "");
  EXPECT_EQ(result, -1);
}

TEST_F(MimeTypesTest, CanBeEmpty) {
  directories.putWritable("Mime.xml", cTypes);
  ASSERT_TRUE(types.load());
  EXPECT_EQ(typeOf("none"), "");
  EXPECT_EQ(result, 0);
}

TEST_F(MimeTypesTest, ComeFromTheFactoryFileWhenTheirsIsBroken) {
  directories.putReadOnly("Mime.xml", cTypes);
  directories.putWritable("Mime.xml", "<mimetypes");
  ASSERT_TRUE(types.load());
  EXPECT_EQ(typeOf("png"), "image/png");
  EXPECT_EQ(directories.getWritable("Mime.xml"), cTypes);
}

TEST_F(MimeTypesTest, AreReadOnce) {
  directories.putWritable("Mime.xml", cTypes);
  ASSERT_TRUE(types.load());
  int const opened = FakeFiles::Count(FakeFiles::Open);
  ASSERT_TRUE(types.load());
  EXPECT_EQ(FakeFiles::Count(FakeFiles::Open), opened);
}

TEST_F(MimeTypesTest, AreNotThereBeforeTheyAreLoaded) {
  EXPECT_EQ(typeOf("png"), "");
  EXPECT_EQ(result, -1);
}

TEST_F(MimeTypesTest, AreLookedForAgainAfterAPause) {
  EXPECT_FALSE(types.load());
  directories.putReadOnly("Mime.xml", cTypes);
  FakeClock::Advance(MimeTypes::cRetryAfter - 1);
  EXPECT_FALSE(types.load());
  FakeClock::Advance(1);
  EXPECT_TRUE(types.load());
}

TEST_F(MimeTypesTest, RunNoCommandsForEachConnectionWhenTheFactoryFileIsBrokenToo) {
  directories.putReadOnly("Mime.xml", "broken");
  EXPECT_FALSE(types.load());
  std::size_t const lines = FakeShell::Lines().size();
  EXPECT_GT(lines, 0U);
  for (int connection = 0; connection < 100; ++connection) {
    EXPECT_FALSE(types.load());
  }
  EXPECT_EQ(FakeShell::Lines().size(), lines);
}

}  // namespace
}  // namespace Zelv
