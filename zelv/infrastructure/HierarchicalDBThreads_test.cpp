// What may be done to one store by several threads at once.

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/TemporaryDirectories.h"

namespace Zelv::Infrastructure {
namespace {

using Platform::Fake::LogCapture;
using Platform::Fake::TemporaryDirectories;

class HierarchicalDBThreads : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(mDatabase.loadFromString("<a><b x='0'>0</b><c/></a>"), 0); }

  /// Runs all operations at the same time, each on a thread of its own.
  template <typename... Operations>
  void runTogether(Operations... aOperations) {
    std::vector<std::thread> threads;
    (threads.emplace_back(aOperations), ...);
    for (std::thread& thread : threads) {
      thread.join();
    }
  }

  static constexpr int cTurns = 2000;
  HierarchicalDB mDatabase;
};

TEST_F(HierarchicalDBThreads, ReadAndWriteOneDocument) {
  std::atomic<int> torn{0};
  auto const write = [&](std::string const& aValue) {
    for (int turn = 0; turn < cTurns; ++turn) {
      mDatabase.setContent("/a/b", "<b x='" + aValue + "'>" + aValue + "</b>", false);
    }
  };
  auto const read = [&] {
    for (int turn = 0; turn < cTurns; ++turn) {
      std::string whole;
      int const code = mDatabase.getContent("/a/b", whole);
      bool const known = whole == "<b x='0'>0</b>" || whole == "<b x='1111'>1111</b>" ||
                         whole == "<b x='22'>22</b>";
      torn += code == 0 && known ? 0 : 1;
    }
  };
  runTogether([&] { write("1111"); }, [&] { write("22"); }, read, read);
  EXPECT_EQ(torn, 0);
}

TEST_F(HierarchicalDBThreads, AskDifferentPathsOfOneDocument) {
  std::atomic<int> wrong{0};
  auto const read = [&](int aFirst) {
    for (int turn = 0; turn < cTurns; ++turn) {
      // More paths than are remembered.
      std::string const name = "n" + std::to_string((aFirst + turn) % 50);
      std::string content;
      wrong += mDatabase.getContent("/a/b[@" + name + "='1']/text()", content) == -1 ? 0 : 1;
      wrong += mDatabase.getContent("/a/b/text()", content) == 0 && content == "0" ? 0 : 1;
    }
  };
  runTogether([&] { read(0); }, [&] { read(25); });
  EXPECT_EQ(wrong, 0);
}

TEST_F(HierarchicalDBThreads, SaveAndSerialiseWhileOthersWrite) {
  TemporaryDirectories const directories;
  std::string const path = directories.writable() + "a.xml";
  runTogether(
      [&] {
        for (int turn = 0; turn < cTurns; ++turn) {
          mDatabase.setContent("/a/b/text()", std::to_string(turn), false);
        }
      },
      [&] {
        for (int turn = 0; turn < cTurns / 20; ++turn) {
          EXPECT_EQ(mDatabase.saveToFile(path), 0);
        }
      },
      [&] {
        for (int turn = 0; turn < cTurns; ++turn) {
          std::string text;
          EXPECT_EQ(mDatabase.serialize(text, -1), 0);
        }
      });
  HierarchicalDB saved;
  EXPECT_EQ(saved.loadFromFile(path), 0);
}

TEST_F(HierarchicalDBThreads, AreNotLockedOutByAPathThatThrows) {
  std::string content;
  EXPECT_THROW(mDatabase.getContent("/a/b[1]", content), std::out_of_range);
  EXPECT_THROW(mDatabase.setContent("/a/b[1]", "", false), std::out_of_range);
  int code = -1;
  runTogether([&] { code = mDatabase.getContent("/a/b/text()", content); });
  EXPECT_EQ(code, 0);
}

TEST_F(HierarchicalDBThreads, AreNotLockedOutByAnyResult) {
  LogCapture quiet;
  TemporaryDirectories const directories;
  std::string content;
  mDatabase.getContent("/a/none", content);
  mDatabase.setContent("/a/none/b", "", false);
  mDatabase.setContent("/a/@none", "", false);
  mDatabase.saveToFile(directories.writable() + "none/a.xml");
  HierarchicalDB never;
  never.getContent("/a", content);
  never.setContent("/a", "", false);
  never.serialize(content, 0);
  never.saveToFile("");
  int code = -1;
  int other = 0;
  runTogether([&] { code = mDatabase.getContent("/a/b/text()", content); },
              [&] {
                std::string text;
                other = never.serialize(text, 0);
              });
  EXPECT_EQ(code, 0);
  EXPECT_EQ(other, -1);
}

}  // namespace
}  // namespace Zelv::Infrastructure
