#include "apps/zelvctl/AssetFolder.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <system_error>

#include "apps/zelvctl/testing/TemporaryFolder.h"

namespace ZelvCtl {
namespace {

using testing::ElementsAre;

class AssetFolderTest : public testing::Test {
 protected:
  std::string write(std::string const& aSource, std::string const& aBytes) {
    auto const file = mFolder.create(aSource);
    file->write(aBytes);
    file->finish();
    return file->name();
  }

  std::string refusalOf(std::string const& aSource) {
    try {
      mFolder.create(aSource);
      return "";
    } catch (AssetFolder::Refusal const& refusal) {
      return refusal.what();
    }
  }

  TemporaryFolder mPlace;
  AssetFolder mFolder{mPlace.path()};
};

TEST_F(AssetFolderTest, KeepsFilesUnderTheLastStepOfTheirSource) {
  EXPECT_EQ(write("../../pictures/tv.png", "x"), "tv.png");
  EXPECT_EQ(mPlace.read("tv.png"), "x");
}

TEST_F(AssetFolderTest, GivesTwoFilesOfOneNameTwoNames) {
  EXPECT_EQ(write("a/tv.png", "1"), "tv.png");
  EXPECT_EQ(write("b/tv.png", "2"), "tv-2.png");
  EXPECT_EQ(write("tv-2.png", "3"), "tv-2-2.png");
  EXPECT_EQ(write("tv.png", "4"), "tv-3.png");
  EXPECT_EQ(mPlace.read("tv.png") + mPlace.read("tv-2.png") + mPlace.read("tv-2-2.png") +
                mPlace.read("tv-3.png"),
            "1234");
}

TEST_F(AssetFolderTest, ReplacesPlainFilesAlone) {
  mPlace.write("plain", "old");
  mPlace.write("target", "precious");
  std::filesystem::create_symlink("target", mPlace.path("link"));
  std::filesystem::create_symlink("nowhere", mPlace.path("dangling"));
  std::filesystem::create_directory(mPlace.path("directory"));
  ASSERT_EQ(::mkfifo(mPlace.path("pipe").c_str(), 0600), 0);
  EXPECT_EQ(write("plain", "new"), "plain");
  EXPECT_EQ(mPlace.read("plain"), "new");
  for (std::string const name : {"link", "dangling", "directory", "pipe"}) {
    EXPECT_EQ(refusalOf("a/" + name), "'" + mPlace.path(name) + "' is there and no plain file");
  }
  EXPECT_EQ(mPlace.read("target"), "precious");
  EXPECT_THAT(mPlace.names(),
              ElementsAre("dangling", "directory", "link", "pipe", "plain", "target"));
}

TEST_F(AssetFolderTest, RefusesSourcesThatNameNoFile) {
  EXPECT_EQ(refusalOf("a/.."), "no file can be called as 'a/..' says");
  EXPECT_EQ(refusalOf(""), "no file can be called as '' says");
}

TEST_F(AssetFolderTest, RefusesASecondFileWhoseNameHasNoRoomForANumber) {
  std::string const name(254, 'x');
  EXPECT_EQ(write(name, "1"), name);
  EXPECT_EQ(refusalOf(name), "'" + name + "' is there already, and too long for a number");
}

TEST_F(AssetFolderTest, TellsTheWayToAFile) {
  EXPECT_EQ(mFolder.pathOf("tv.png"), mPlace.path() + "/tv.png");
  EXPECT_EQ(AssetFolder("/").pathOf("tv.png"), "/tv.png");
  EXPECT_EQ(AssetFolder(".").pathOf("tv.png"), "tv.png");
}

TEST_F(AssetFolderTest, MustBeThere) {
  mPlace.write("file", "");
  try {
    AssetFolder const folder(mPlace.path("file"));
    ADD_FAILURE() << "it is no directory";
  } catch (std::system_error const& error) {
    EXPECT_EQ(error.what(), "cannot write to '" + mPlace.path("file") + "': Not a directory");
  }
  EXPECT_THROW(AssetFolder(mPlace.path("none")), std::system_error);
}

}  // namespace
}  // namespace ZelvCtl
