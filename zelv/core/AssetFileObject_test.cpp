#include "zelv/core/AssetFileObject.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace Zelv {
namespace {

bool climbs(std::string const& aPath) {
  return AssetFileObject("name", aPath, "id").climbs();
}

TEST(AssetFileObject, CarriesItsThreeTexts) {
  AssetFileObject const file("tv.png", "pictures/tv.png", "A2CE030A");
  EXPECT_EQ(file.getFileName(), "tv.png");
  EXPECT_EQ(file.getPath(), "pictures/tv.png");
  EXPECT_EQ(file.getID(), "A2CE030A");
}

TEST(AssetFileObject, IsDeletedThroughItsBase) {
  EXPECT_TRUE(std::has_virtual_destructor_v<AssetFileObject>);
}

TEST(AssetFileObject, ClimbsWithTwoDotsAsAStepAnywhere) {
  for (char const* path : {"..", "../a", "/..", "a/..", "a/../b", "/a/b/../../etc/shadow", "a//..",
                           "./../a", "a/.././b"}) {
    EXPECT_TRUE(climbs(path)) << path;
  }
}

TEST(AssetFileObject, ClimbsNotWithDotsInANameOrOneDot) {
  for (char const* path : {"", "/", "a", "/etc/name", "a..", "..a", "a..b/c", "...", ".../a", "./a",
                           "a/./b", ".", "a/...", "/..a/b.."}) {
    EXPECT_FALSE(climbs(path)) << path;
  }
}

TEST(AssetFileObject, ClimbsAtTheSeamOfDirectoryAndSource) {
  std::string const directory = "packages/.";
  std::string const source = "./secret";
  EXPECT_FALSE(climbs(directory));
  EXPECT_FALSE(climbs(source));
  EXPECT_TRUE(climbs(directory + source));
}

TEST(AssetFileObject, MayBeOpenedUnlessItClimbsOrWasRefused) {
  AssetFileObject file("name", "a/b", "id");
  EXPECT_TRUE(file.mayBeOpened());
  file.refuse();
  EXPECT_FALSE(file.mayBeOpened());
  EXPECT_FALSE(AssetFileObject("name", "a/../b", "id").mayBeOpened());
}

}  // namespace
}  // namespace Zelv
