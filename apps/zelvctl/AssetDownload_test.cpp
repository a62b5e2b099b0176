#include "apps/zelvctl/AssetDownload.h"

#include <gmock/gmock.h>

#include <functional>
#include <sstream>
#include <stdexcept>
#include <tuple>
#include <utility>
#include <vector>

#include "apps/zelvctl/testing/AssetWire.h"
#include "apps/zelvctl/testing/TemporaryFolder.h"

namespace ZelvCtl {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class AssetDownloadTest : public testing::Test {
 protected:
  AssetDownloadTest() { mOptions.assets = {"a"}; }

  /// What an answer brings about, the one that is made from the identifier of the request.
  /// @return what is thrown.
  template <typename Answer>
  std::string take(Answer aAnswer) {
    AssetMessage const message("me", mOptions);
    AssetFolder folder(mPlace.path());
    AssetPrinter printer(mOut, false);
    ProgressBar bar(mTerminal, [] { return std::size_t{60}; });
    AssetDownload download("Kitchen", message,
                           {mOptions.list ? nullptr : &folder, printer, &bar, mFailures});
    try {
      download.onHead(202, AssetWire::contentType());
      mWantsMore = download.onData(aAnswer(message.requestId()));
      EXPECT_EQ(mWantsMore, !download.isComplete());
      download.end();
      return "";
    } catch (std::runtime_error const& error) {
      return error.what();
    }
  }

  /// The lines on standard error, the last included.
  std::string failures() {
    std::ostringstream errors;
    try {
      mFailures.raise(errors);
      return "";
    } catch (std::runtime_error const& error) {
      return errors.str() + error.what();
    }
  }

  TemporaryFolder mPlace;
  Options mOptions;
  Failures mFailures;
  std::ostringstream mOut;
  std::ostringstream mTerminal;
  bool mWantsMore = true;
};

std::string oneAsset(std::string const& aId, std::string const& aSource = "x/tv.png") {
  return AssetWire::result(aId, AssetWire::asset("a", "1", aSource));
}

TEST_F(AssetDownloadTest, WritesAFileAndTellsOfIt) {
  EXPECT_EQ(take([](std::string const& aId) {
              return oneAsset(aId) + AssetWire::lastFile("1", "PNG") + AssetWire::closing();
            }),
            "");
  EXPECT_EQ(failures(), "");
  EXPECT_FALSE(mWantsMore);
  EXPECT_THAT(mPlace.names(), ElementsAre("tv.png"));
  EXPECT_EQ(mPlace.read("tv.png"), "PNG");
  EXPECT_EQ(mOut.str(), "a 1 3 " + mPlace.path("tv.png") + "\n");
}

TEST_F(AssetDownloadTest, ShowsOnATerminalHowMuchHasCome) {
  take([](std::string const& aId) {
    return oneAsset(aId) + AssetWire::lastFile("1", "PNG") + AssetWire::closing();
  });
  EXPECT_THAT(mTerminal.str(), StartsWith("\rtv.png [---"));
  EXPECT_THAT(mTerminal.str(), HasSubstr("#] 100 % of 3 B"));
  EXPECT_TRUE(mTerminal.str().ends_with(" \r"));
}

TEST_F(AssetDownloadTest, WritesTheFilesOfSeveralAnswers) {
  mOptions.packages = {"p"};
  mOptions.assets = {"a", "b"};
  EXPECT_EQ(take([](std::string const& aId) {
              return AssetWire::result(aId, AssetWire::asset("a", "1", "one") +
                                                AssetWire::asset("a", "1", "two")) +
                     AssetWire::file("1", "1") + AssetWire::file("1", "") +
                     AssetWire::result(aId, AssetWire::asset("b", "2", "dir/one")) +
                     AssetWire::lastFile("2", "3") + AssetWire::closing();
            }),
            "");
  EXPECT_EQ(failures(), "");
  EXPECT_THAT(mPlace.names(), ElementsAre("one", "one-2", "two"));
  EXPECT_EQ(mPlace.read("one") + "," + mPlace.read("two") + "," + mPlace.read("one-2"), "1,,3");
}

TEST_F(AssetDownloadTest, TellsOfWhatIsNotThere) {
  mOptions.assets = {"a", "b"};
  EXPECT_EQ(take([](std::string const& aId) {
              return AssetWire::result(aId, "") + oneAsset(aId) + AssetWire::file("1", "PNG") +
                     AssetWire::closing();
            }),
            "");
  EXPECT_EQ(failures(), "'Kitchen' has no asset 'a'");
  EXPECT_EQ(mPlace.read("tv.png"), "PNG");
}

TEST_F(AssetDownloadTest, TellsOfFilesThatDidNotCome) {
  mOptions.assets = {"a", "b"};
  EXPECT_EQ(take([](std::string const& aId) {
              return AssetWire::result(aId, AssetWire::asset("a", "1", "one") +
                                                AssetWire::asset("a", "2", "two")) +
                     AssetWire::file("1", "1") + oneAsset(aId) + AssetWire::closing();
            }),
            "");
  EXPECT_EQ(failures(),
            "zelvctl: 'Kitchen' did not send 'two', the file of asset 'a'\n"
            "'Kitchen' did not send 'x/tv.png', the file of asset 'a'");
  EXPECT_THAT(mPlace.names(), ElementsAre("one"));
}

TEST_F(AssetDownloadTest, TellsOfAllThatASetDropsOnceItFails) {
  mOptions.assets = {"a", "b", "c"};
  EXPECT_EQ(take([](std::string const& aId) {
              return oneAsset(aId) + AssetWire::file("1", "PNG") + AssetWire::failure(aId) +
                     AssetWire::closing();
            }),
            "");
  EXPECT_EQ(failures(),
            "zelvctl: 'Kitchen' cannot describe asset 'b'\n"
            "'Kitchen' gave no answer for asset 'c'");
  EXPECT_EQ(mPlace.read("tv.png"), "PNG");
}

TEST_F(AssetDownloadTest, TellsThatASetUnderstoodNothing) {
  EXPECT_EQ(take([](std::string const&) { return AssetWire::closing(); }), "");
  EXPECT_EQ(failures(), "'Kitchen' gave no answer for asset 'a'");
}

TEST_F(AssetDownloadTest, PassesOverAFileThatCannotHaveItsName) {
  mOptions.assets = {"a", "b"};
  std::filesystem::create_directory(mPlace.path("dir"));
  EXPECT_EQ(take([](std::string const& aId) {
              return AssetWire::result(aId, AssetWire::asset("a", "1", "../..") +
                                                AssetWire::asset("b", "2", "dir") +
                                                AssetWire::asset("c", "3", "good")) +
                     AssetWire::file("1", "1") + AssetWire::file("2", "2") +
                     AssetWire::file("3", "3") + oneAsset(aId) + AssetWire::file("1", "4") +
                     AssetWire::closing();
            }),
            "");
  EXPECT_EQ(failures(),
            "zelvctl: asset 'a' was not kept: no file can be called as '../..' says\n"
            "asset 'b' was not kept: '" +
                mPlace.path("dir") + "' is there and no plain file");
  EXPECT_THAT(mPlace.names(), ElementsAre("dir", "good", "tv.png"));
}

TEST_F(AssetDownloadTest, LeavesNothingOfAFileThatBreaksOff) {
  EXPECT_EQ(take([](std::string const& aId) {
              return oneAsset(aId) + AssetWire::fileHead("1", 5) + "PNG";
            }),
            "the answer of 'Kitchen' breaks off in 'tv.png'");
  EXPECT_TRUE(mWantsMore);
  EXPECT_THAT(mPlace.names(), IsEmpty());
  EXPECT_EQ(mOut.str(), "");
}

TEST_F(AssetDownloadTest, FailsWhenTheClosingDelimiterIsMissing) {
  EXPECT_EQ(
      take([](std::string const& aId) { return oneAsset(aId) + AssetWire::lastFile("1", "PNG"); }),
      "the answer of 'Kitchen' breaks off");
  EXPECT_THAT(mPlace.names(), ElementsAre("tv.png"));
}

TEST_F(AssetDownloadTest, RefusesAnAnswerThatDoesNotFitTheRequest) {
  std::string const broken = "the answer of 'Kitchen' is broken: ";
  using Make = std::function<std::string(std::string const&)>;
  std::vector<std::pair<std::string, Make>> const rows = {
      {"there is something between its parts", [](std::string const&) { return "<html>"; }},
      {"a description in it is none", [](std::string const&) { return AssetWire::text("x"); }},
      {"it is one to another request", [](std::string const&) { return oneAsset("other"); }},
      {"there is a file in it that belongs to no asset",
       [](std::string const&) { return AssetWire::file("1", "x"); }},
      {"there is a file in it that belongs to no asset",
       [](std::string const& aId) { return oneAsset(aId) + AssetWire::file("2", "x"); }},
      {"there is a file in it that belongs to no asset",
       [](std::string const& aId) {
         return oneAsset(aId) + AssetWire::file("1", "x") + AssetWire::file("1", "x");
       }},
      {"it goes on behind the last answer",
       [](std::string const& aId) { return oneAsset(aId) + oneAsset(aId) + AssetWire::closing(); }},
      {"it goes on behind the last answer",
       [](std::string const& aId) { return AssetWire::failure(aId) + oneAsset(aId); }},
  };
  for (auto const& row : rows) {
    auto const& make = row.second;
    EXPECT_EQ(take([&](std::string const& aId) { return make(aId) + AssetWire::closing(); }),
              broken + row.first);
  }
}

TEST_F(AssetDownloadTest, RefusesAPageInThePlaceOfAssets) {
  AssetMessage const message("me", mOptions);
  AssetPrinter printer(mOut, false);
  AssetDownload download("Kitchen", message, {nullptr, printer, nullptr, mFailures});
  for (auto const& [status, type, text] :
       {std::tuple(400L, "text/xml; charset=utf-8",
                   "'Kitchen' refuses the request, with status 400"),
        std::tuple(302L, "multipart/related; boundry=x",
                   "'Kitchen' refuses the request, with status 302"),
        std::tuple(200L, "text/html", "'Kitchen' answers with no assets, but with 'text/html'")}) {
    try {
      download.onHead(status, type);
      ADD_FAILURE() << text;
    } catch (std::runtime_error const& error) {
      EXPECT_STREQ(error.what(), text);
    }
  }
  EXPECT_FALSE(download.isComplete());
}

TEST_F(AssetDownloadTest, ListsWithoutFetching) {
  mOptions.list = true;
  mOptions.assets = {"a", "b"};
  EXPECT_EQ(take([](std::string const& aId) {
              return oneAsset(aId) + AssetWire::file("1", "PNG") +
                     AssetWire::result(aId, AssetWire::asset("b", "2", "y") + "<dir>" +
                                                AssetWire::asset("c", "3", "z") + "</dir>") +
                     AssetWire::fileHead("2", 1000000);
            }),
            "");
  EXPECT_EQ(failures(), "");
  EXPECT_FALSE(mWantsMore) << "nothing more is needed";
  EXPECT_EQ(mOut.str(), "a 1 x/tv.png\nb 2 y\nc 3 z\n");
  EXPECT_THAT(mPlace.names(), IsEmpty());
  EXPECT_EQ(mTerminal.str(), "");
}

TEST_F(AssetDownloadTest, ListsNoMoreOnceASetFails) {
  mOptions.list = true;
  mOptions.assets = {"a", "b"};
  EXPECT_EQ(
      take([](std::string const& aId) { return AssetWire::failure(aId) + AssetWire::closing(); }),
      "");
  EXPECT_EQ(failures(),
            "zelvctl: 'Kitchen' cannot describe asset 'a'\n"
            "'Kitchen' gave no answer for asset 'b'");
}

}  // namespace
}  // namespace ZelvCtl
