#include "zelv/infrastructure/Path.h"

#include <gtest/gtest.h>

namespace {

using Zelv::Infrastructure::Path;

TEST(Path, SplitsAtTheLastSlash) {
  EXPECT_EQ(Path("/a/b/file").getDirectoryName(), "/a/b");
  EXPECT_EQ(Path("/a/b/file").getFileName(), "file");
}

TEST(Path, HasAnEmptyFileNameWhenItEndsInASlash) {
  EXPECT_EQ(Path("/a/b/").getDirectoryName(), "/a/b");
  EXPECT_EQ(Path("/a/b/").getFileName(), "");
}

TEST(Path, HasNeitherForABareName) {
  EXPECT_EQ(Path("file").getDirectoryName(), "");
  EXPECT_EQ(Path("file").getFileName(), "");
  EXPECT_EQ(Path().getDirectoryName(), "");
  EXPECT_EQ(Path().getFileName(), "");
}

TEST(Path, HasAnEmptyDirectoryRightBehindTheRoot) {
  EXPECT_EQ(Path("/file").getDirectoryName(), "");
  EXPECT_EQ(Path("/file").getFileName(), "file");
}

TEST(Path, ExistsOnlyWhenItIsThere) {
  EXPECT_TRUE(Path("/").exists());
  EXPECT_FALSE(Path("/no/such/file").exists());
  EXPECT_FALSE(Path("").exists());
  EXPECT_FALSE(Path(std::string(5000, 'x')).exists());
}

}  // namespace
