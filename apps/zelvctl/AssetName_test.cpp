#include "apps/zelvctl/AssetName.h"

#include <gtest/gtest.h>

namespace ZelvCtl {
namespace {

TEST(AssetName, IsTheLastStepOfTheSource) {
  EXPECT_EQ(AssetName::of("tv.png"), "tv.png");
  EXPECT_EQ(AssetName::of("a/b.c/tv"), "tv");
  EXPECT_EQ(AssetName::of("../../etc/passwd"), "passwd");
  EXPECT_EQ(AssetName::of("/tv.png"), "tv.png");
  EXPECT_EQ(AssetName::of("Straße 1.png"), "Straße 1.png");
  EXPECT_EQ(AssetName::of(std::string(255, 'x')), std::string(255, 'x'));
}

TEST(AssetName, IsNothingThatLeadsOutOfTheDirectoryOrHidesInIt) {
  for (std::string const& source :
       {std::string(), std::string("/"), std::string("a/"), std::string("."), std::string(".."),
        std::string("a/.."), std::string("../.."), std::string("a/.bashrc"), std::string("a\0b", 3),
        std::string("a\nb"), std::string("a\x1b[2J"), std::string("a\x7f"),
        std::string("a\xc2\x9b"), std::string(256, 'x')}) {
    EXPECT_EQ(AssetName::of(source), std::nullopt) << source;
  }
}

TEST(AssetName, IsNumberedBeforeItsExtension) {
  EXPECT_EQ(AssetName::numbered("tv.png", 2), "tv-2.png");
  EXPECT_EQ(AssetName::numbered("tv.tar.gz", 3), "tv.tar-3.gz");
  EXPECT_EQ(AssetName::numbered("tv", 12), "tv-12");
}

}  // namespace
}  // namespace ZelvCtl
