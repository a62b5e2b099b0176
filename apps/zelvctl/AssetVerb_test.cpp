#include "apps/zelvctl/AssetVerb.h"

#include <gmock/gmock.h>

#include "apps/zelvctl/testing/AssetWire.h"
#include "apps/zelvctl/testing/FakeHttpServer.h"
#include "apps/zelvctl/testing/TemporaryFolder.h"
#include "apps/zelvctl/testing/VerbTest.h"

namespace ZelvCtl {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

using Connection = FakeHttpServer::Connection;

class AssetVerbTest : public VerbTest {
 protected:
  /// Runs it against a set that serves so. @return what keeps it from its end.
  std::string fetch(FakeHttpServer::Answer aAnswer, bool aIsTerminal = false) {
    FakeHttpServer server(std::move(aAnswer));
    mUrl = server.url();
    FakeSet set([](std::string const&) {}, mUrl);
    Options options = optionsFor(set);
    options.device = mOptions.device;
    options.assets = mOptions.assets;
    options.folder = mOptions.folder;
    options.list = mOptions.list;
    options.json = mOptions.json;
    options.timeout = mOptions.timeout;
    std::string const result = run(options, aIsTerminal);
    mRequests = server.requests();
    return result;
  }

  std::string run(Options const& aOptions, bool aIsTerminal = false) {
    try {
      AssetVerb(aOptions, mStop.descriptor(), mOut, mErrors, aIsTerminal).run();
      return "";
    } catch (std::runtime_error const& error) {
      return error.what();
    }
  }

  /// Sends one asset, called "a", with the rest of the answer.
  static FakeHttpServer::Answer with(std::string const& aRest) {
    return [aRest](std::string const& aRequest, Connection const& aConnection) {
      aConnection.send(
          AssetWire::head() +
          AssetWire::result(AssetWire::requestId(aRequest), AssetWire::asset("a", "1", "tv.png")) +
          aRest);
    };
  }

  AssetVerbTest() {
    mOptions.device = "Kitchen";
    mOptions.assets = {"a"};
    mOptions.folder = mPlace.path();
    mOptions.timeout = 20;
  }

  TemporaryFolder mPlace;
  Options mOptions;
  std::string mUrl;
  std::vector<std::string> mRequests;
  std::ostringstream mErrors;
};

TEST_F(AssetVerbTest, FetchesAnAssetOfADeviceGivenByName) {
  EXPECT_EQ(fetch(with(AssetWire::lastFile("1", "PNG") + AssetWire::closing())), "");
  EXPECT_EQ(mOut.str(), "a 1 3 " + mPlace.path("tv.png") + "\n");
  EXPECT_EQ(mErrors.str(), "");
  EXPECT_EQ(mPlace.read("tv.png"), "PNG");
  ASSERT_EQ(mRequests.size(), 1U);
  EXPECT_THAT(mRequests[0], HasSubstr("<SenderID>6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10</SenderID>"));
  EXPECT_THAT(mRequests[0], HasSubstr("'><Asset name='a' /></AssetRequest></Body></Envelope>"));
}

TEST_F(AssetVerbTest, PrintsJsonForPrograms) {
  mOptions.json = true;
  EXPECT_EQ(fetch(with(AssetWire::lastFile("1", "PNG") + AssetWire::closing())), "");
  EXPECT_EQ(mOut.str(), "{\"asset\":\"a\",\"file\":\"" + mPlace.path("tv.png") +
                            "\",\"id\":\"1\",\"size\":3,\"src\":\"tv.png\",\"type\":\"image/"
                            "png\"}\n");
}

TEST_F(AssetVerbTest, ShowsABarOnATerminalAlone) {
  std::string const rest = AssetWire::lastFile("1", "PNG") + AssetWire::closing();
  EXPECT_EQ(fetch(with(rest), true), "");
  EXPECT_THAT(mErrors.str(), HasSubstr("100 % of 3 B"));
  mErrors.str("");
  EXPECT_EQ(fetch(with(rest), false), "");
  EXPECT_EQ(mErrors.str(), "");
}

TEST_F(AssetVerbTest, ListsAndLeavesTheRestOfTheAnswer) {
  mOptions.list = true;
  bool wasLeft = false;
  EXPECT_EQ(fetch([&](std::string const& aRequest, Connection const& aConnection) {
              with(AssetWire::fileHead("1", 1U << 30U))(aRequest, aConnection);
              wasLeft = aConnection.waitForEnd();
            }),
            "");
  EXPECT_EQ(mOut.str(), "a 1 tv.png\n");
  EXPECT_TRUE(wasLeft);
  EXPECT_THAT(mPlace.names(), IsEmpty());
}

TEST_F(AssetVerbTest, TellsEachFailureInALineAndFails) {
  mOptions.assets = {"b", "c", "a"};
  EXPECT_EQ(fetch([](std::string const& aRequest, Connection const& aConnection) {
              std::string const id = AssetWire::requestId(aRequest);
              aConnection.send(AssetWire::head() + AssetWire::result(id, "") +
                               AssetWire::result(id, "") +
                               AssetWire::result(id, AssetWire::asset("a", "1", "tv.png")) +
                               AssetWire::lastFile("1", "PNG") + AssetWire::closing());
            }),
            "'Kitchen' has no asset 'c'");
  EXPECT_EQ(mErrors.str(), "zelvctl: 'Kitchen' has no asset 'b'\n");
  EXPECT_EQ(mPlace.read("tv.png"), "PNG");
}

TEST_F(AssetVerbTest, KeepsNothingOfAnAnswerThatBreaksOff) {
  EXPECT_EQ(fetch(with(AssetWire::fileHead("1", 10) + "PNG")),
            "the answer of 'Kitchen' breaks off in 'tv.png'");
  EXPECT_THAT(mPlace.names(), IsEmpty());
}

TEST_F(AssetVerbTest, TellsWhatIsWrongWithTheConnection) {
  std::string const told = fetch([](std::string const&, Connection const&) {});
  EXPECT_EQ(told, "cannot fetch from 'Kitchen' at " + mUrl + ": Empty reply from server");
}

TEST_F(AssetVerbTest, TakesAnAnswerThatIsWholeHoweverTheConnectionEnds) {
  EXPECT_EQ(fetch([](std::string const& aRequest, Connection const& aConnection) {
              with(AssetWire::lastFile("1", "PNG") + AssetWire::closing())(aRequest, aConnection);
              EXPECT_TRUE(aConnection.waitForEnd());
              aConnection.reset();
            }),
            "");
}

TEST_F(AssetVerbTest, TellsThatTheRequestIsRefused) {
  EXPECT_EQ(fetch([](std::string const&, Connection const& aConnection) {
              aConnection.send(AssetWire::badRequest());
            }),
            "'Kitchen' refuses the request, with status 400");
}

TEST_F(AssetVerbTest, WaitsNoLongerThanItShouldForTheAnswerAndForMoreOfIt) {
  mOptions.device = FakeSet::Id;
  mOptions.timeout = 2;
  EXPECT_EQ(fetch([](std::string const&, Connection const& aConnection) {
              EXPECT_TRUE(aConnection.waitForEnd());
            }),
            "'Kitchen' sent nothing within 2 s");
  EXPECT_EQ(fetch([](std::string const& aRequest, Connection const& aConnection) {
              with(AssetWire::fileHead("1", 10) + "PNG")(aRequest, aConnection);
              EXPECT_TRUE(aConnection.waitForEnd());
            }),
            "'Kitchen' sent nothing more within 2 s");
  EXPECT_THAT(mPlace.names(), IsEmpty());
}

TEST_F(AssetVerbTest, EndsAtTheSignalAndLeavesNothing) {
  EXPECT_EQ(fetch([this](std::string const& aRequest, Connection const& aConnection) {
              with(AssetWire::fileHead("1", 10) + "PNG")(aRequest, aConnection);
              mStop.ring();
              EXPECT_TRUE(aConnection.waitForEnd());
            }),
            "interrupted");
  EXPECT_THAT(mPlace.names(), IsEmpty());
}

TEST_F(AssetVerbTest, AsksNobodyWithoutADirectory) {
  Options options;
  options.device = "127.0.0.2";
  options.assets = {"a"};
  options.folder = mPlace.path("none");
  EXPECT_EQ(run(options),
            "cannot write to '" + mPlace.path("none") + "': No such file or directory");
}

TEST_F(AssetVerbTest, AsksAnAddressWithoutLookingForIt) {
  Options options;
  options.device = "127.0.0.2";  // nobody serves there
  options.assets = {"a"};
  options.folder = mPlace.path();
  options.timeout = 5;
  EXPECT_THAT(run(options), StartsWith("cannot fetch from '127.0.0.2' at http://127.0.0.2:4450/: "
                                       "Failed to connect to 127.0.0.2 port 4450"));
}

TEST_F(AssetVerbTest, SaysThatADeviceHasNoAssets) {
  FakeSet set;
  Options options = optionsFor(set);
  options.assets = {"a"};
  options.folder = mPlace.path();
  EXPECT_EQ(run(options), "'Kitchen' has no AssetManagement service");
}

TEST_F(AssetVerbTest, FailsWhenNobodyReadsWhatItPrints) {
  mOut.setstate(std::ios::badbit);
  EXPECT_EQ(fetch(with(AssetWire::lastFile("1", "PNG") + AssetWire::closing())),
            "cannot write to standard output");
}

}  // namespace
}  // namespace ZelvCtl
