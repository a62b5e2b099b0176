#include "zelv/platform/Directories.h"

#include <gtest/gtest.h>

namespace {

using Zelv::Platform::Directories;

constexpr char cReadOnly[] = "/mtd_appdata/Images_960x540/Quorl/";
constexpr char cWritable[] = "/mtd_rwarea/kor_config_data/";

/// Leaves the directories as they are at start.
class DirectoriesTest : public ::testing::Test {
 public:
  ~DirectoriesTest() override { Directories::Set(cReadOnly, cWritable); }
};

TEST_F(DirectoriesTest, AreThoseOfTheSetUnlessAHostSetsOthers) {
  EXPECT_EQ(cReadOnly, Directories::ReadOnly());
  EXPECT_EQ(cWritable, Directories::Writable());
}

TEST_F(DirectoriesTest, AreThoseThatTheHostSets) {
  Directories::Set("/factory/", "/state/");
  EXPECT_EQ("/factory/", Directories::ReadOnly());
  EXPECT_EQ("/state/", Directories::Writable());
}

TEST_F(DirectoriesTest, GetTheFinalSlashThatIsMissing) {
  Directories::Set("factory", "/state");
  EXPECT_EQ("factory/", Directories::ReadOnly());
  EXPECT_EQ("/state/", Directories::Writable());
}

TEST_F(DirectoriesTest, AreTheCurrentOneWhenEmptyAndNotTheRoot) {
  Directories::Set("", "");
  EXPECT_EQ("./", Directories::ReadOnly());
  EXPECT_EQ("./", Directories::Writable());
}

TEST_F(DirectoriesTest, MayBeSetToWhatTheyAre) {
  Directories::Set("/factory/", "/state/");
  Directories::Set(Directories::Writable(), Directories::ReadOnly());
  EXPECT_EQ("/state/", Directories::ReadOnly());
  EXPECT_EQ("/factory/", Directories::Writable());
}

}  // namespace
