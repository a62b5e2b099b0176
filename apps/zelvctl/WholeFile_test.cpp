#include "apps/zelvctl/WholeFile.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>

#include <csignal>
#include <memory>
#include <system_error>

#include "apps/zelvctl/testing/TemporaryFolder.h"

namespace ZelvCtl {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class WholeFileTest : public testing::Test {
 protected:
  TemporaryFolder mFolder;
  Descriptor const mDescriptor{::open(mFolder.path().c_str(), O_RDONLY | O_DIRECTORY)};
};

TEST_F(WholeFileTest, HasItsNameOnceItIsFinished) {
  WholeFile file(mDescriptor, "a.png");
  file.write("one ");
  file.write("");
  file.write("two");
  EXPECT_THAT(mFolder.names(), ElementsAre(StartsWith(".zelvctl-")));
  file.finish();
  EXPECT_THAT(mFolder.names(), ElementsAre("a.png"));
  EXPECT_EQ(mFolder.read("a.png"), "one two");
  EXPECT_EQ(file.size(), 7U);
}

TEST_F(WholeFileTest, LeavesNothingWhenItIsGivenUp) {
  mFolder.write("a.png", "old");
  auto file = std::make_unique<WholeFile>(mDescriptor, "a.png");
  file->write("new");
  file.reset();
  EXPECT_THAT(mFolder.names(), ElementsAre("a.png"));
  EXPECT_EQ(mFolder.read("a.png"), "old");
}

TEST_F(WholeFileTest, ReplacesAPlainFileInOneStep) {
  mFolder.write("a.png", "old");
  WholeFile file(mDescriptor, "a.png");
  file.write("new");
  EXPECT_EQ(mFolder.read("a.png"), "old");
  file.finish();
  EXPECT_EQ(mFolder.read("a.png"), "new");
}

TEST_F(WholeFileTest, MayBeEmpty) {
  WholeFile(mDescriptor, "a.png").finish();
  EXPECT_THAT(mFolder.names(), ElementsAre("a.png"));
  EXPECT_EQ(mFolder.read("a.png"), "");
}

TEST_F(WholeFileTest, MayBeReadByThoseWhomTheUserLetsRead) {
  WholeFile(mDescriptor, "a.png").finish();
  mFolder.write("b.png", "");
  EXPECT_EQ(std::filesystem::status(mFolder.path("a.png")).permissions(),
            std::filesystem::status(mFolder.path("b.png")).permissions());
}

TEST_F(WholeFileTest, TellsWhyItCannotBeFinished) {
  std::filesystem::create_directory(mFolder.path("a.png"));
  {
    WholeFile file(mDescriptor, "a.png");
    try {
      file.finish();
      ADD_FAILURE() << "a directory was replaced";
    } catch (std::system_error const& error) {
      EXPECT_STREQ(error.what(), "cannot write 'a.png': Is a directory");
    }
  }
  EXPECT_THAT(mFolder.names(), ElementsAre("a.png"));
}

TEST_F(WholeFileTest, TellsThatThereIsNoRoom) {
  rlimit former{};
  ::getrlimit(RLIMIT_FSIZE, &former);
  auto* const handler = std::signal(SIGXFSZ, SIG_IGN);
  rlimit const limit{4096, former.rlim_max};
  ::setrlimit(RLIMIT_FSIZE, &limit);
  std::string told;
  try {
    WholeFile(mDescriptor, "a.png").write(std::string(5000, 'x'));
  } catch (std::system_error const& error) {
    told = error.what();
  }
  ::setrlimit(RLIMIT_FSIZE, &former);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(told, "cannot write 'a.png': File too large");
  EXPECT_THAT(mFolder.names(), IsEmpty());
}

}  // namespace
}  // namespace ZelvCtl
