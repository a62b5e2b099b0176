#include "zelv/core/AssetPackages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "zelv/core/AssetPackage.h"
#include "zelv/platform/fake/FakeLog.h"

namespace Zelv {
namespace {

using Platform::Fake::LogCapture;

AssetPackages::Held package(std::string const& aId, std::string const& aContent) {
  return std::make_shared<AssetPackages::AssetPackage>(
      "<AssetPackage ID='" + aId + "' path=''>" + aContent + "</AssetPackage>", "");
}

std::string read(AssetPackages& aPackages, std::string const& aXPath) {
  std::string result = "from before";
  aPackages.read(aXPath, result);
  return result;
}

TEST(AssetPackages, FindsByNameAndByID) {
  AssetPackages packages;
  EXPECT_TRUE(packages.insert("n", package("i", "")));
  EXPECT_EQ(packages.find("n")->getID(), "i");
  EXPECT_EQ(packages.findByID("i"), packages.find("n"));
  EXPECT_EQ(packages.find("i"), nullptr);
  EXPECT_EQ(packages.findByID("n"), nullptr);
}

TEST(AssetPackages, KeepsTheFirstOfAName) {
  AssetPackages packages;
  packages.insert("n", package("first", ""));
  EXPECT_TRUE(packages.insert("n", package("second", "")));
  EXPECT_EQ(packages.find("n")->getID(), "first");
}

TEST(AssetPackages, RemovesByName) {
  AssetPackages packages;
  packages.insert("n", package("i", ""));
  EXPECT_FALSE(packages.remove("i"));
  EXPECT_TRUE(packages.remove("n"));
  EXPECT_FALSE(packages.remove("n"));
  EXPECT_EQ(packages.find("n"), nullptr);
}

TEST(AssetPackages, LeavesAPackageToThoseWhoHoldIt) {
  AssetPackages packages;
  packages.insert("n", package("i", "<a src='x'/>"));
  AssetPackages::Held const held = packages.find("n");
  packages.remove("n");
  std::string value;
  EXPECT_EQ(held->getContent("/AssetPackage/a/@src", value), 0);
  EXPECT_EQ(value, "x");
  EXPECT_EQ(held.use_count(), 1);
}

TEST(AssetPackages, ReadsAllInTheOrderOfTheirNames) {
  AssetPackages packages;
  packages.insert("b", package("1", "<x src='of b'/>"));
  packages.insert("a", package("2", "<x src='of a'/><y src='and'/>"));
  packages.insert("c", package("3", ""));
  packages.insert("d", package("4", "<x src=''/>"));
  EXPECT_EQ(read(packages, "/AssetPackage/*/@src"), "of a&#x13;and&#x13;of b");
  EXPECT_EQ(read(packages, "/AssetPackage/z"), "");
}

TEST(AssetPackages, TakesAsManyAsTheBoundAndNoMore) {
  LogCapture log;
  AssetPackages packages;
  for (std::size_t count = 0; count < AssetPackages::maximumPackages; ++count) {
    EXPECT_TRUE(packages.insert(std::to_string(count), package("i", "")));
  }
  EXPECT_FALSE(packages.insert("one more", package("i", "")));
  EXPECT_TRUE(
      log.hasContaining(PCRealDebug::Warning,
                        "AssetPackages::insert: Package 'one more' is not taken, there are 256 "));
  EXPECT_TRUE(packages.insert("0", package("i", "")));
  EXPECT_TRUE(packages.remove("0"));
  EXPECT_TRUE(packages.insert("one more", package("i", "")));
}

TEST(AssetPackages, TakeABoundedNumberOfBytes) {
  AssetPackages packages;
  std::string const text = "<x>" + std::string(std::size_t{4} << 20U, 'x') + "</x>";
  for (int count = 0; count < 15; ++count) {
    EXPECT_TRUE(packages.insert(std::to_string(count), package("i", text)));
  }
  EXPECT_FALSE(packages.insert("one more", package("i", text)));
  EXPECT_TRUE(packages.insert("small", package("i", "")));
  EXPECT_TRUE(packages.insert("0", package("i", text)));
  EXPECT_TRUE(packages.remove("0"));
  EXPECT_TRUE(packages.insert("one more", package("i", text)));
}

TEST(AssetPackages, CountWhatIsWrittenAndMeasureAnewWhenThatIsTooMuch) {
  AssetPackages packages;
  std::string const text(std::size_t{15} << 20U, 'x');
  AssetPackages::Held const held = package("i", "<x>old</x>");
  packages.insert("n", held);
  for (int count = 0; count < 4; ++count) {
    EXPECT_EQ(held->setContent("/AssetPackage/x/text()", text), 0);
  }
  EXPECT_GT(held->getSize(), 4 * text.size());
  EXPECT_TRUE(packages.hasRoomFor(std::size_t{1} << 20U));
  EXPECT_GT(held->getSize(), 4 * text.size());
  EXPECT_TRUE(packages.hasRoomFor(text.size()));
  EXPECT_LT(held->getSize(), 2 * text.size());
  EXPECT_FALSE(packages.hasRoomFor(AssetPackages::maximumSize - text.size()));
}

TEST(AssetPackages, TakeTheFilesThatTheyNameOutOfASet) {
  AssetPackages packages;
  packages.insert("a", package("1", "<x src='of a'/>"));
  packages.insert("b", package("2", "<x src='of b'/>"));
  std::set<std::string> paths = {"of a", "of b", "of c"};
  packages.removeNamed(paths);
  EXPECT_THAT(paths, ::testing::ElementsAre("of c"));
}

TEST(AssetPackages, ReadsNothingWhereItWouldBeTooMuch) {
  LogCapture log;
  AssetPackages packages;
  std::string const text(AssetPackages::maximumResult / 4 - 6, 'x');
  for (char const* name : {"a", "b", "c", "d"}) {
    packages.insert(name, package("i", "<x>" + text + "</x>"));
  }
  EXPECT_EQ(read(packages, "/AssetPackage/x/text()").size(), 4 * text.size() + 18);
  packages.insert("e", package("i", "<x>too much</x><y>little</y>"));
  EXPECT_EQ(read(packages, "/AssetPackage/x/text()"), "");
  EXPECT_TRUE(
      log.has(PCRealDebug::Warning,
              "AssetPackages::read: '/AssetPackage/x/text()' gives more than 8388608 bytes."));
  EXPECT_EQ(read(packages, "/AssetPackage/y/text()"), "little");
}

TEST(AssetPackages, AreReadWhileOthersLoadAndUnload) {
  AssetPackages packages;
  packages.insert("stays", package("i", "<x src='here'/>"));
  std::atomic<bool> stop{false};
  std::vector<std::thread> readers;
  std::atomic<int> wrong{0};
  for (int count = 0; count < 3; ++count) {
    readers.emplace_back([&] {
      while (!stop) {
        AssetPackages::Held const held = packages.find("goes");
        std::string value;
        if (held && held->getContent("/AssetPackage/x/@src", value) != 0) {
          ++wrong;
        }
        std::string const all = read(packages, "/AssetPackage/x/@src");
        if (all != "here" && all != "gone&#x13;here") {
          ++wrong;
        }
      }
    });
  }
  for (int round = 0; round < 200; ++round) {
    packages.insert("goes", package("j", "<x src='gone'/>"));
    packages.remove("goes");
  }
  stop = true;
  for (std::thread& reader : readers) {
    reader.join();
  }
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace Zelv
