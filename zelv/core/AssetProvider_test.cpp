#include "zelv/core/AssetProvider.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "zelv/core/AssetPackage.h"
#include "zelv/core/AssetPackages.h"
#include "zelv/core/testing/AssetProviderTest.h"
#include "zelv/platform/fake/FakeFiles.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv {
namespace {

using Platform::Fake::FakeFiles;
using Platform::Fake::Logged;
using Testing::AssetProviderTest;
using Testing::AssetTree;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Provider = Core::AssetProvider;

// Paths.

struct Classified {
  char const* path;
  Provider::TargetPackage target;
  char const* key;
};

class AssetPath : public ::testing::TestWithParam<Classified> {};

TEST_P(AssetPath, IsSortedByItsFirstStep) {
  std::string key;
  EXPECT_EQ(Provider::m_ExtractTargetPackageType(GetParam().path, key), GetParam().target)
      << GetParam().path;
  EXPECT_EQ(key, GetParam().key) << GetParam().path;
}

INSTANTIATE_TEST_SUITE_P(WithoutBoundary, AssetPath,
                         ::testing::Values(Classified{"", Provider::FAIL_READ_PACKAGE, ""},
                                           Classified{"/", Provider::FAIL_READ_PACKAGE, ""},
                                           Classified{"/Foo", Provider::FAIL_READ_PACKAGE, ""},
                                           Classified{"/AssetPackage", Provider::FAIL_READ_PACKAGE,
                                                      ""}));

INSTANTIATE_TEST_SUITE_P(
    Elsewhere, AssetPath,
    ::testing::Values(Classified{"/Foo/text()", Provider::NOT_A_PACKAGE, ""},
                      Classified{"//AssetPackage/x", Provider::NOT_A_PACKAGE, ""},
                      Classified{"/AssetPackages/x", Provider::NOT_A_PACKAGE, ""},
                      Classified{"/AssetPackag[@name='x']", Provider::NOT_A_PACKAGE, ""},
                      Classified{"/Foo[@name='x']/AssetPackage", Provider::NOT_A_PACKAGE, ""},
                      // The first character is not looked at.
                      Classified{"xAssetPackage/y", Provider::NOSPEC_PACKAGE, ""}));

INSTANTIATE_TEST_SUITE_P(
    AllPackages, AssetPath,
    ::testing::Values(Classified{"/AssetPackage/x", Provider::NOSPEC_PACKAGE, ""},
                      Classified{"/AssetPackage/", Provider::NOSPEC_PACKAGE, ""},
                      Classified{"/AssetPackage//x[@name='y']", Provider::NOSPEC_PACKAGE, ""},
                      Classified{"/AssetPackage[", Provider::NOSPEC_PACKAGE, ""},
                      Classified{"/AssetPackage[@name='x'", Provider::NOSPEC_PACKAGE, ""},
                      Classified{"/AssetPackage[@other='x']/y", Provider::NOSPEC_PACKAGE, ""},
                      Classified{"/AssetPackage[]/y", Provider::NOSPEC_PACKAGE, ""},
                      Classified{"/AssetPackage[a/@name='x']", Provider::NOSPEC_PACKAGE, ""}));

INSTANTIATE_TEST_SUITE_P(
    OnePackage, AssetPath,
    ::testing::Values(
        Classified{"/AssetPackage[@name='x']", Provider::NAMED_PACKAGE, "x"},
        Classified{"/AssetPackage[@name=\"x\"]/y", Provider::NAMED_PACKAGE, "x"},
        Classified{"/AssetPackage[@name=\"it's\"]/y", Provider::NAMED_PACKAGE, "it's"},
        Classified{"/AssetPackage[@name='']/y", Provider::NAMED_PACKAGE, ""},
        Classified{"/AssetPackage[@name='a/b]c']/y", Provider::NAMED_PACKAGE, "a/b]c"},
        Classified{"/AssetPackage[@ID='i' and @name='x']", Provider::NAMED_PACKAGE, "x"},
        // The quotes are looked for in all of the path.
        Classified{"/AssetPackage[@name]/y[@z='q']", Provider::NAMED_PACKAGE, "q"},
        Classified{"/AssetPackage[@name]/y", Provider::NAMED_PACKAGE, ""},
        Classified{"/AssetPackage[@name='x]/y", Provider::NAMED_PACKAGE, "x]/y"}));

// Each of these would be a question by ID if the search began where it seems to.
INSTANTIATE_TEST_SUITE_P(
    NeverByID, AssetPath,
    ::testing::Values(Classified{"/AssetPackage[@ID='i']/y", Provider::NOSPEC_PACKAGE, ""},
                      Classified{"/AssetPackage[@ID='i']", Provider::NOSPEC_PACKAGE, ""},
                      Classified{"/AssetPackage[@ID='i']/y[@name='x']", Provider::NOSPEC_PACKAGE,
                                 ""},
                      Classified{"/AssetPackage[@ID='i']/y[@name='x' and @ID='j']",
                                 Provider::NOSPEC_PACKAGE, ""}));

// Reading.

TEST_F(AssetProviderTest, LeavesTheResultOfAPathWithoutSecondStep) {
  run();
  EXPECT_EQ(read(""), "as it was");
  EXPECT_EQ(read("/AssetPackage"), "as it was");
  EXPECT_EQ(read("/Foo"), "as it was");
}

TEST_F(AssetProviderTest, ReadsTheMainStore) {
  run("<Foo><Bar src='x'>text</Bar></Foo>");
  EXPECT_EQ(read("/Foo/Bar/text()"), "text");
  EXPECT_EQ(read("/Foo/Bar/@src"), "x");
  EXPECT_EQ(read("/Foo/Other/text()"), "");
  EXPECT_EQ(read("//Bar/@src"), "x");
}

TEST_F(AssetProviderTest, DoesNotLookAtTheBranchItself) {
  run("<Foo>text</Foo>");
  std::string data;
  EXPECT_EQ(provider->getData(std::string(20, 'x') + "/Foo/text()", data, GUID::nullGUID), 0);
  EXPECT_EQ(data, "text");
  data = "as it was";
  EXPECT_EQ(provider->getData("short", data, GUID::nullGUID), 0);
  EXPECT_EQ(data, "as it was");
}

TEST_F(AssetProviderTest, ReadsThePackageOfAName) {
  run("<x src='main'/>");
  load("one", "<x src='1'/>");
  load("two", "<x src='2'/>");
  EXPECT_EQ(read("/AssetPackage[@name='two']/x/@src"), "2");
  EXPECT_EQ(read("/AssetPackage[@name='one']/x/@src"), "1");
  EXPECT_EQ(read("/AssetPackage[@name='one']/y/@src"), "");
  EXPECT_EQ(read("/AssetPackage[@name='one']"), packageText("one", "<x src='1'/>"));
}

TEST_F(AssetProviderTest, ReadsNothingOfAPackageThatIsGone) {
  run();
  EXPECT_EQ(read("/AssetPackage[@name='gone']/x"), "");
}

TEST_F(AssetProviderTest, ReadsAllPackagesInTheOrderOfTheirNames) {
  run();
  write("/AssetPackage[@name='test']", "");
  load("b", "<x src='of b'/>");
  load("a", "<x src='of a'/>");
  EXPECT_EQ(read("/AssetPackage/*/@src"), "of a&#x13;of b");
  load("aa", "<x src=''/>");
  EXPECT_EQ(read("/AssetPackage/*/@src"), "of a&#x13;of b");
  EXPECT_EQ(read("/AssetPackage/none"), "");
}

TEST_F(AssetProviderTest, ReadsByIDThroughAllPackages) {
  run();
  load("a", "<x src='of a'/>");
  load("b", "<x src='of b'/>");
  EXPECT_EQ(read("/AssetPackage[@ID='id of b']/x/@src"), "of b");
}

TEST_F(AssetProviderTest, ReadsAnEmptyTextAndLogsWhenThePathIsNone) {
  run("<a/>");
  load("p", "<a/>");
  struct Case {
    char const* path;
    char const* text;
  };
  for (Case const one :
       {Case{"/a/b[1]/c",
             "KOR::AssetProvider::getData() (local) An error ocurred with "
             "HierarchichalDB:"},
        Case{"/AssetPackage[@name='p']/b[1]/c",
             "KOR::AssetProvider::getData() (external) An error ocurred with HierarchichalDB:"},
        Case{"/AssetPackage/b[1]/c",
             "KOR::AssetProvider::getData() (external) An error ocurred with HierarchichalDB:"}}) {
    log.clear();
    EXPECT_EQ(read(one.path), "");
    auto const errors = log.texts(PCRealDebug::Error);
    ASSERT_EQ(errors.size(), 2U) << log.dump();
    EXPECT_EQ(errors[0], one.text);
    EXPECT_THAT(errors[1], ::testing::StartsWith("Error: basic_string"));
  }
}

// Writing.

TEST_F(AssetProviderTest, LoadsAPackageUnderTheNameInItsText) {
  run();
  EXPECT_EQ(write("/AssetPackage[@name='asked']", packageText("real", "<x src='1'/>")), 0);
  EXPECT_EQ(read("/AssetPackage[@name='asked']/x/@src"), "");
  EXPECT_EQ(read("/AssetPackage[@name='real']/x/@src"), "1");
  EXPECT_THAT(tree.calls, IsEmpty());
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "KOR::AssetProvider::setData() requested "
                          "xpath:/Zelv/Storage/Assets/AssetPackage[@name='asked'] not found"));
}

TEST_F(AssetProviderTest, KeepsThePackageThatHasTheName) {
  run();
  load("real", "<x src='first'/>");
  EXPECT_EQ(write("/AssetPackage[@name='asked']", packageText("real", "<x src='second'/>")), 0);
  EXPECT_EQ(read("/AssetPackage[@name='real']/x/@src"), "first");
}

TEST_F(AssetProviderTest, DoesNotReplaceAPackageByOneOfItsName) {
  run();
  load("p", "<x src='first'/>");
  EXPECT_EQ(load("p", "<x src='second'/>"), -1);
  EXPECT_EQ(read("/AssetPackage[@name='p']/x/@src"), "first");
}

struct BadPackage {
  char const* text;
  char const* error;
};

class BadAssetPackage : public AssetProviderTest,
                        public ::testing::WithParamInterface<BadPackage> {};

TEST_P(BadAssetPackage, IsNotLoaded) {
  run();
  EXPECT_EQ(write("/AssetPackage[@name='p']", GetParam().text), -1);
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          std::string("AssetProvider::setData() Failed to add a new asset package "
                                      "from xml: ") +
                              GetParam().text + " to path: /AssetPackage[@name='p'] \n"));
  EXPECT_EQ(read("/AssetPackage/@name"), "test");
  std::string const failed =
      "KOR::AssetProvider::m_LoadAssetPackage() Failed to create a new asset package";
  if (*GetParam().error == '\0') {
    EXPECT_FALSE(log.has(PCRealDebug::Error, failed));
  } else {
    EXPECT_THAT(log, Logged(PCRealDebug::Error, failed));
    EXPECT_THAT(log, Logged(PCRealDebug::Error, std::string("Error: ") + GetParam().error));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, BadAssetPackage,
    ::testing::Values(BadPackage{"text", "AssetPackage: Failed to Load string into HDB!"},
                      BadPackage{"<Package ID='i' name='p' path=''/>",
                                 "AssetPackage: Root element is not AssetPackage!!"},
                      BadPackage{"<AssetPackage ID='i' name='p'/>",
                                 "AssetPackage: Failed to read root path from HDB"},
                      BadPackage{"<AssetPackage name='p' path=''/>",
                                 "AssetPackage: Failed to set id for this store."},
                      BadPackage{"<AssetPackage ID='i' path=''/>", ""}));

TEST_F(AssetProviderTest, GivesAPackageWithAnEmptyIDANewOne) {
  run();
  EXPECT_EQ(write("/AssetPackage[@name='p']", "<AssetPackage ID='' name='p' path=''/>"), 0);
  std::string const id = read("/AssetPackage[@name='p']/@ID");
  EXPECT_EQ(GUID(id).toString(), id);
}

TEST_F(AssetProviderTest, LoadsNoPackageThroughADeeperPath) {
  run();
  std::string const text = packageText("p", "");
  EXPECT_EQ(write("/AssetPackage[@name='p']/x", text), -1);
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "KOR::AssetProvider::setData() requested "
                          "xpath:/Zelv/Storage/Assets/AssetPackage[@name='p']/x not found"));
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "AssetProvider::setData() Set Data on Store Repository Failed! xml: " +
                              text + " to path: /AssetPackage[@name='p']/x \n"));
  EXPECT_EQ(read("/AssetPackage[@name='p']/@ID"), "");
}

TEST_F(AssetProviderTest, UnloadsAPackageWithAnEmptyText) {
  run();
  load("p", "<x src='1'/>");
  EXPECT_EQ(write("/AssetPackage[@name='p']", ""), 0);
  EXPECT_EQ(read("/AssetPackage[@name='p']/x/@src"), "");
  EXPECT_EQ(write("/AssetPackage[@name='p']", ""), -1);
  EXPECT_THAT(tree.calls, IsEmpty());
}

TEST_F(AssetProviderTest, UnloadsThePackageHoweverDeepThePathGoes) {
  run();
  load("p", "<x src='1'/>");
  EXPECT_EQ(write("/AssetPackage[@name='p']/x/@src", ""), 0);
  EXPECT_EQ(read("/AssetPackage[@name='p']/@ID"), "");
}

TEST_F(AssetProviderTest, UnloadsTheBuiltInPackage) {
  run();
  EXPECT_EQ(write("/AssetPackage[@name='test']", ""), 0);
  EXPECT_EQ(read("/AssetPackage/TVImage/@src"), "");
}

TEST_F(AssetProviderTest, WritesIntoAPackageAndTells) {
  run();
  load("p", "<x src='1'><y>old</y></x>");
  EXPECT_EQ(write("/AssetPackage[@name='p']/x/@src", "2"), 0);
  EXPECT_EQ(write("/AssetPackage[@name='p']/x/y/text()", "new"), 0);
  EXPECT_EQ(read("/AssetPackage[@name='p']/x"), "<x src='2'><y>new</y></x>");
  EXPECT_THAT(tree.calls,
              ElementsAre("notify /Zelv/Storage/Assets/AssetPackage[@name='p']/x/@src = 2 " +
                              transaction.toString(),
                          "notify /Zelv/Storage/Assets/AssetPackage[@name='p']/x/y/text() = new " +
                              transaction.toString()));
}

TEST_F(AssetProviderTest, RefusesAWriteThatFindsNothingInAPackage) {
  run();
  load("p", "<x/>");
  log.clear();
  EXPECT_EQ(write("/AssetPackage[@name='p']/x/@src", "2"), -1);
  EXPECT_THAT(tree.calls, IsEmpty());
  EXPECT_THAT(log, Logged(PCRealDebug::Error, "AssetProvider::setData() setContent gives -1"));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "KOR::AssetProvider::setData() (external) An error ocurred with "
                          "HierarchichalDB:"));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "Error: AssetProvider::Set Data on Store Repository Failed!"));
}

TEST_F(AssetProviderTest, RefusesWritesByIDAndWithoutAName) {
  run();
  load("x", "<y>old</y>");
  EXPECT_EQ(write("/AssetPackage[@ID='id of x']/y/text()", "new"), -1);
  EXPECT_EQ(write("/AssetPackage/y/text()", "new"), -1);
  EXPECT_EQ(write("/AssetPackage[@ID='id of x']", ""), -1);
  EXPECT_EQ(write("/AssetPackage[@ID='i']", packageText("p", "")), -1);
  EXPECT_EQ(read("/AssetPackage[@name='x']/y/text()"), "old");
  EXPECT_EQ(read("/AssetPackage[@name='p']/@ID"), "");
  EXPECT_THAT(tree.calls, IsEmpty());
}

TEST_F(AssetProviderTest, WritesIntoTheMainStoreAndTellsButDoesNotSave) {
  run("<Foo>old</Foo>");
  std::string const before = directories.getWritable("Assets.xml");
  EXPECT_EQ(write("/Foo/text()", "new"), 0);
  EXPECT_EQ(read("/Foo/text()"), "new");
  EXPECT_THAT(tree.calls, ElementsAre("notify /Zelv/Storage/Assets/Foo/text() = new " +
                                      transaction.toString()));
  EXPECT_EQ(directories.getWritable("Assets.xml"), before);
  EXPECT_EQ(write("/Foo/Bar", "<Bar/>"), 0);
  EXPECT_EQ(read("/Foo/Bar"), "<Bar/>");
}

TEST_F(AssetProviderTest, WritesAnEmptyTextIntoTheMainStore) {
  run("<Foo>old</Foo>");
  EXPECT_EQ(write("/Foo/text()", ""), 0);
  EXPECT_EQ(read("/Foo/text()"), "");
}

TEST_F(AssetProviderTest, RefusesAWriteThatFindsNothingInTheMainStore) {
  run("<Foo/>");
  EXPECT_EQ(write("/Bar/text()", "new"), -1);
  EXPECT_THAT(tree.calls, IsEmpty());
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "KOR::AssetProvider::setData() (internal) An error ocurred with "
                          "HierarchichalDB:"));
  EXPECT_THAT(
      log, Logged(PCRealDebug::Error, "Error: AssetProvider::Set Data on Main Repository Failed!"));
}

TEST_F(AssetProviderTest, DoesNothingForAPathWithoutSecondStep) {
  run("<Foo>old</Foo>");
  EXPECT_EQ(write("", "new"), 0);
  EXPECT_EQ(write("/Foo", "<Foo>new</Foo>"), 0);
  EXPECT_EQ(write("/AssetPackage", packageText("p", "")), 0);
  EXPECT_EQ(read("/Foo/text()"), "old");
  EXPECT_EQ(read("/AssetPackage/@name"), "test");
  EXPECT_THAT(tree.calls, IsEmpty());
}

TEST_F(AssetProviderTest, AddsAsItWritesAndAlwaysSucceeds) {
  run("<Foo>old</Foo>");
  EXPECT_EQ(provider->addData(std::string(cRoot) + "/Foo/text()", "new", transaction), 0);
  EXPECT_EQ(read("/Foo/text()"), "new");
  EXPECT_THAT(tree.calls, ElementsAre("notify /Zelv/Storage/Assets/Foo/text() = new " +
                                      transaction.toString()));
  EXPECT_EQ(provider->addData(std::string(cRoot) + "/Bar/text()", "new", transaction), 0);
  EXPECT_EQ(provider->addData(std::string(cRoot) + "/AssetPackage/x/@y", "z", transaction), 0);
}

// Packages with a file.

class AssetPackageOnDisk : public AssetProviderTest {
 protected:
  void begin(bool aPersist) {
    run();
    directories.putWritable("p.xml", packageText("p", "<x>old</x>"));
    before = directories.getWritable("p.xml");
    ASSERT_TRUE(provider->addPackage(
        std::make_shared<Provider::AssetPackage>(directories.writable() + "p.xml", "", aPersist)));
  }
  int change() { return write("/AssetPackage[@name='p']/x/text()", "new"); }

  std::string before;
};

TEST_F(AssetPackageOnDisk, IsSavedWithEachChangeWhenItPersists) {
  begin(true);
  EXPECT_EQ(change(), 0);
  EXPECT_THAT(directories.getWritable("p.xml"), HasSubstr("<x>new</x>"));
  EXPECT_FALSE(directories.hasWritable("p.xml.tmp"));
}

TEST_F(AssetPackageOnDisk, StaysAsItIsWhenItDoesNot) {
  begin(false);
  EXPECT_EQ(change(), 0);
  EXPECT_EQ(directories.getWritable("p.xml"), before);
}

TEST_F(AssetPackageOnDisk, FailsTheWriteThatCannotBeSavedAfterSubscribersHeard) {
  begin(true);
  FakeFiles::FailNth(FakeFiles::Write);
  EXPECT_EQ(change(), -1);
  EXPECT_THAT(log, Logged(PCRealDebug::Error, "Error: AssetProvider::File save failed!"));
  EXPECT_EQ(directories.getWritable("p.xml"), before);
  EXPECT_EQ(tree.calls.size(), 1U);
  EXPECT_EQ(read("/AssetPackage[@name='p']/x/text()"), "new");
}

// What others may do to the set.

TEST_F(AssetProviderTest, TakesAPackageOfTheLargestSizeAndNoneBeyond) {
  run();
  std::string const frame = packageText("p", "<x></x>");
  std::string const text((4U << 20U) - frame.size(), 'x');
  EXPECT_EQ(load("p", "<x>" + text + "y</x>"), -1);
  EXPECT_THAT(log, Logged(PCRealDebug::Error, "Error: AssetPackage: Too long!"));
  EXPECT_EQ(load("p", "<x>" + text + "</x>"), 0);
  EXPECT_EQ(read("/AssetPackage[@name='p']/x/text()").size(), text.size());
}

TEST_F(AssetProviderTest, TakesABoundedNumberOfPackages) {
  run();
  std::size_t taken = 1;
  while (taken <= AssetPackages::maximumPackages && load(std::to_string(taken), "") == 0) {
    ++taken;
  }
  EXPECT_EQ(taken, AssetPackages::maximumPackages);
  write("/AssetPackage[@name='1']", "");
  EXPECT_EQ(load("another", ""), 0);
}

TEST_F(AssetProviderTest, LetsPackagesGrowToABoundByWrites) {
  run();
  std::string const text(std::size_t{15} << 20U, 'x');
  for (char const* name : {"a", "b", "c", "d"}) {
    load(name, "<x>old</x>");
    EXPECT_EQ(write("/AssetPackage[@name='" + std::string(name) + "']/x/text()", text), 0);
  }
  load("e", "<x>old</x>");
  tree.calls.clear();
  EXPECT_EQ(write("/AssetPackage[@name='e']/x/text()", text), -1);
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "AssetProvider::setData() No room for 15728640 bytes more in packages."));
  EXPECT_EQ(read("/AssetPackage[@name='e']/x/text()"), "old");
  EXPECT_THAT(tree.calls, IsEmpty());
  EXPECT_EQ(write("/AssetPackage[@name='e']/x/text()", "new"), 0);
  write("/AssetPackage[@name='a']", "");
  EXPECT_EQ(write("/AssetPackage[@name='e']/x/text()", text), 0);
}

// What a value replaces gives its room back.
TEST_F(AssetProviderTest, LetsOneValueBeWrittenAnyNumberOfTimes) {
  run();
  load("p", "<x>old</x>");
  std::string const text(std::size_t{15} << 20U, 'x');
  for (int count = 0; count < 6; ++count) {
    EXPECT_EQ(write("/AssetPackage[@name='p']/x/text()", text), 0) << count;
  }
  EXPECT_EQ(load("q", "<x>" + std::string(std::size_t{3} << 20U, 'x') + "</x>"), 0);
}

// Lifetime.

constexpr char const* cSubscription =
    "subscribe /Zelv/Devices/LocalTV/Interfaces/NetworkInterface/IPv4/Address/text()";

TEST_F(AssetProviderTest, AsksForTheAddressAndLoadsItsPackageWhenInitialised) {
  make("<Foo>text</Foo>");
  EXPECT_THAT(tree.calls, IsEmpty());
  EXPECT_EQ(read("/Foo/text()"), "");
  command(LIFETIME_INITIALISE);
  EXPECT_THAT(tree.calls, ElementsAre(cSubscription));
  EXPECT_EQ(read("/Foo/text()"), "text");
  EXPECT_EQ(read("/AssetPackage[@name='test']"),
            "<AssetPackage ID='A984A499-EBA5-4b04-BC74-08448843B7C0' name='test' path=''>"
            "<TVImage src='tv.png' ID='A2CE030A-73DC-4c39-958B-E76657A31530'/></AssetPackage>");
}

TEST_F(AssetProviderTest, WritesNothingBeforeItIsInitialised) {
  make("<Foo>text</Foo>");
  EXPECT_EQ(write("/Foo/text()", "new"), -1);
}

TEST_F(AssetProviderTest, RestoresAFileThatIsMissing) {
  provider = std::make_unique<Provider>(AssetTree::findFor);
  command(LIFETIME_INITIALISE);
  EXPECT_EQ(read("//Factory"), "<Factory/>");
}

TEST_F(AssetProviderTest, ThrowsWithoutAFile) {
  directories.putReadOnly("Assets.xml", "no XML");
  provider = std::make_unique<Provider>(AssetTree::findFor);
  try {
    command(LIFETIME_INITIALISE);
    FAIL() << "nothing thrown";
  } catch (std::runtime_error const& error) {
    EXPECT_STREQ(error.what(),
                 "in AssetProvider::m_initialize: Failed to load Assets file and could not "
                 "restore!");
  }
}

TEST_F(AssetProviderTest, ThrowsWhenTheFileIsGoneAtTheSecondLook) {
  make("");
  FakeFiles::Reset();
  // The check opens the file twice.
  command(LIFETIME_INITIALISE);
  int const opens = FakeFiles::Count(FakeFiles::Open);
  make("");
  FakeFiles::Reset();
  FakeFiles::FailNth(FakeFiles::Open, opens);
  try {
    command(LIFETIME_INITIALISE);
    FAIL() << "nothing thrown";
  } catch (std::runtime_error const& error) {
    EXPECT_STREQ(error.what(), "AssetProvider Failed to Read from File or File was not valid XML!");
  }
}

TEST_F(AssetProviderTest, ThrowsWithoutATree) {
  directories.putWritable("Assets.xml", "<Assets/>");
  provider = std::make_unique<Provider>([](GUID) -> IBase* { return nullptr; });
  try {
    command(LIFETIME_INITIALISE);
    FAIL() << "nothing thrown";
  } catch (std::runtime_error const& error) {
    EXPECT_STREQ(error.what(), "AssetProvider Failed to get ICoreData Interface");
  }
  command(LIFETIME_START);
  command(LIFETIME_TERMINATE);
  EXPECT_EQ(provider->getLifetimeState(), 3);
  EXPECT_THAT(tree.calls, IsEmpty());
}

TEST_F(AssetProviderTest, GoesThroughItsLifetime) {
  make("");
  EXPECT_EQ(provider->getLifetimeState(), 0);
  command(LIFETIME_INITIALISE);
  EXPECT_EQ(provider->getLifetimeState(), 1);
  command(LIFETIME_START);
  EXPECT_EQ(provider->getLifetimeState(), 2);
  EXPECT_EQ(tree.provider, provider.get());
  command(LIFETIME_STOP);
  EXPECT_EQ(provider->getLifetimeState(), 1);
  command(LIFETIME_TERMINATE);
  EXPECT_EQ(provider->getLifetimeState(), 3);
  // It leaves the branch: the tree ends with it.
  EXPECT_THAT(tree.calls, ElementsAre(cSubscription, "register /Zelv/Storage/Assets"));
}

TEST_F(AssetProviderTest, IgnoresACommandInAnyOtherState) {
  make("");
  for (eLifetimeCommand const early : {LIFETIME_START, LIFETIME_STOP, LIFETIME_TERMINATE}) {
    command(early);
    EXPECT_EQ(provider->getLifetimeState(), 0);
  }
  command(LIFETIME_INITIALISE);
  command(LIFETIME_INITIALISE);
  command(LIFETIME_STOP);
  EXPECT_EQ(provider->getLifetimeState(), 1);
  command(LIFETIME_START);
  command(LIFETIME_START);
  command(LIFETIME_INITIALISE);
  EXPECT_EQ(provider->getLifetimeState(), 2);
  command(LIFETIME_TERMINATE);
  for (eLifetimeCommand const late :
       {LIFETIME_INITIALISE, LIFETIME_START, LIFETIME_STOP, LIFETIME_TERMINATE}) {
    command(late);
    EXPECT_EQ(provider->getLifetimeState(), 3);
  }
  EXPECT_THAT(tree.calls, ElementsAre(cSubscription, "register /Zelv/Storage/Assets"));
}

TEST_F(AssetProviderTest, LogsEntryAndExitOfWhatDoesNothing) {
  make("");
  EXPECT_EQ(provider->onSubscribe("", GUID::nullGUID), 0);
  EXPECT_EQ(provider->onUnsubscribe("", GUID::nullGUID), 0);
  provider->onStatus(StatusInformation("text"), GUID::nullGUID);
  for (std::string const operation : {"onSubscribe", "onUnsubscribe", "onStatus"}) {
    EXPECT_THAT(log, Logged(PCRealDebug::Trace, "AssetProvider::" + operation + ": Entry."));
    EXPECT_THAT(log, Logged(PCRealDebug::Trace, "AssetProvider::" + operation + ": Exit."));
  }
}

}  // namespace
}  // namespace Zelv
