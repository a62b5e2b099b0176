#include "zelv/core/AssetPackage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <string>

#include "zelv/platform/fake/FakeFiles.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/LogMatchers.h"
#include "zelv/platform/fake/TemporaryDirectories.h"

namespace Zelv {
namespace {

using AssetPackage = Core::AssetProvider::AssetPackage;
using Platform::Fake::FakeFiles;
using Platform::Fake::LogCapture;
using Platform::Fake::Logged;
using Platform::Fake::TemporaryDirectories;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

char const cPackage[] =
    "<AssetPackage ID='i' name='n' path='there/'><a src='x' ID='1'/></AssetPackage>";

std::string contentOf(AssetPackage& aPackage, std::string const& aXPath) {
  std::string value;
  EXPECT_EQ(aPackage.getContent(aXPath, value), 0) << aXPath;
  return value;
}

template <typename... Arguments>
std::string failureOf(Arguments const&... aArguments) {
  try {
    AssetPackage const package(aArguments...);
  } catch (std::runtime_error const& error) {
    return error.what();
  }
  return "nothing thrown";
}

TEST(AssetPackage, HoldsWhatItsTextSays) {
  AssetPackage package(cPackage, "");
  EXPECT_EQ(package.getID(), "i");
  EXPECT_EQ(package.getRootPath(), "there/");
  EXPECT_FALSE(package.persists());
  EXPECT_EQ(contentOf(package, "/AssetPackage/a/@src"), "x");
}

TEST(AssetPackage, PrefersThePathThatItIsLoadedFor) {
  AssetPackage package(cPackage, "/here/");
  EXPECT_EQ(package.getRootPath(), "/here/");
  EXPECT_EQ(contentOf(package, "/AssetPackage/@path"), "there/");
}

TEST(AssetPackage, NeedsThePathOfTheDocumentOnlyWithoutAnother) {
  std::string const text = "<AssetPackage ID='i' name='n'/>";
  EXPECT_EQ(failureOf(text, std::string("/here/")), "nothing thrown");
  EXPECT_EQ(failureOf(text, std::string()), "AssetPackage: Failed to read root path from HDB");
}

TEST(AssetPackage, TakesAnEmptyPath) {
  EXPECT_EQ(AssetPackage("<AssetPackage ID='i' path=''/>", "").getRootPath(), "");
}

TEST(AssetPackage, RefusesWhatIsNoXml) {
  EXPECT_EQ(failureOf(std::string("no XML"), std::string()),
            "AssetPackage: Failed to Load string into HDB!");
}

TEST(AssetPackage, RefusesAnotherRootElement) {
  EXPECT_EQ(failureOf(std::string("<Assets ID='i' path=''/>"), std::string()),
            "AssetPackage: Root element is not AssetPackage!!");
}

// A name of more bytes than a read gives.
TEST(AssetPackage, RefusesARootElementWhoseNameCannotBeRead) {
  EXPECT_EQ(failureOf("<" + std::string(std::size_t{9} << 20U, 'x') + "/>", std::string()),
            "AssetPackage: Failed to read root element name from HDB");
}

TEST(AssetPackage, GivesItselfAnIDInPlaceOfAnEmptyOne) {
  AssetPackage package("<AssetPackage ID='' name='n' path=''/>", "");
  EXPECT_EQ(GUID(package.getID()).toString(), package.getID());
  EXPECT_EQ(contentOf(package, "/AssetPackage/@ID"), package.getID());
}

TEST(AssetPackage, RefusesAPackageWithoutTheAttributeID) {
  EXPECT_EQ(failureOf(std::string("<AssetPackage name='n' path=''/>"), std::string()),
            "AssetPackage: Failed to set id for this store.");
}

TEST(AssetPackage, WritesButCreatesNoAttribute) {
  AssetPackage package(cPackage, "");
  EXPECT_EQ(package.setContent("/AssetPackage/a/@src", "y"), 0);
  EXPECT_EQ(contentOf(package, "/AssetPackage/a/@src"), "y");
  EXPECT_EQ(package.setContent("/AssetPackage/a/@other", "y"), -1);
}

TEST(AssetPackage, TakesTheFilesThatItNamesOutOfASet) {
  AssetPackage package(
      "<AssetPackage ID='i' path='/p/'><a src='x'/><b><c src='d/y'/></b></AssetPackage>", "/here/");
  std::set<std::string> paths = {"/p/x", "/p/d/y", "/p/y", "x", "/here/x", "/p/"};
  package.removeNamed(paths);
  EXPECT_THAT(paths, ElementsAre("/here/x", "/p/", "/p/y", "x"));
}

TEST(AssetPackage, KnowsTheSizeOfItsText) {
  EXPECT_EQ(AssetPackage(cPackage, "").getSize(), sizeof cPackage - 1);
}

TEST(AssetPackage, CountsWhatIsWrittenUntilItIsMeasured) {
  AssetPackage package(cPackage, "");
  package.setContent("/AssetPackage/a/@src", "1234");
  package.setContent("/AssetPackage/a/@src", "12345");
  package.setContent("/AssetPackage/a/@none", "123456");
  EXPECT_EQ(package.getSize(), sizeof cPackage - 1 + 9);
  package.measure();
  EXPECT_EQ(package.getSize(), sizeof cPackage - 1 + 4);
}

class AssetPackageFile : public ::testing::Test {
 protected:
  AssetPackageFile() { directories.putWritable("p.xml", cPackage); }
  std::string path() const { return directories.writable() + "p.xml"; }

  TemporaryDirectories directories;
  LogCapture log;
};

TEST_F(AssetPackageFile, IsLoadedAndRemembered) {
  AssetPackage package(path(), "", true);
  EXPECT_EQ(package.getID(), "i");
  EXPECT_EQ(package.getRootPath(), "there/");
  EXPECT_TRUE(package.persists());
  EXPECT_EQ(package.getSize(), sizeof cPackage - 1);
  EXPECT_FALSE(AssetPackage(path(), "", false).persists());
}

TEST_F(AssetPackageFile, IsRefusedWhenItIsNotThere) {
  EXPECT_EQ(failureOf(directories.writable() + "none.xml", std::string(), true),
            "AssetPackage: Failed to Load HDB from File!");
}

TEST_F(AssetPackageFile, IsReplacedBySaving) {
  AssetPackage package(path(), "", true);
  package.setContent("/AssetPackage/a/@src", "changed");
  EXPECT_TRUE(package.save());
  EXPECT_THAT(directories.getWritable("p.xml"), HasSubstr("changed"));
  EXPECT_THAT(directories.listWritable(), ElementsAre("p.xml"));
}

TEST_F(AssetPackageFile, StaysAsItWasWhenItCannotBeWritten) {
  AssetPackage package(path(), "", true);
  package.setContent("/AssetPackage/a/@src", "changed");
  for (FakeFiles::Call const call :
       {FakeFiles::Open, FakeFiles::Write, FakeFiles::Sync, FakeFiles::Close}) {
    FakeFiles::FailNth(call);
    EXPECT_FALSE(package.save());
    FakeFiles::Reset();
    EXPECT_EQ(directories.getWritable("p.xml"), cPackage);
    EXPECT_THAT(directories.listWritable(), ElementsAre("p.xml"));
  }
}

TEST_F(AssetPackageFile, StaysAsItWasWhenItCannotBeReplaced) {
  AssetPackage package(path(), "", true);
  package.setContent("/AssetPackage/a/@src", "changed");
  FakeFiles::FailNth(FakeFiles::Rename);
  EXPECT_TRUE(package.save());
  EXPECT_EQ(directories.getWritable("p.xml"), cPackage);
  EXPECT_THAT(directories.listWritable(), ElementsAre("p.xml"));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "AssetPackage::save: File '" + path() + "' could not be replaced."));
}

}  // namespace
}  // namespace Zelv
