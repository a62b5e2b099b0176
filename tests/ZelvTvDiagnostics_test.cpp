// "explain" and "stats" at the prompt of a set.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/TvProcess.h"

namespace {

using testing::Contains;
using testing::MatchesRegex;
using testing::StartsWith;

char const* const kInterval = "/Zelv/Configuration/UPnP/Ping/Interval/text()";

class ZelvTvDiagnostics : public testing::Test {
 protected:
  ZelvTvDiagnostics() {
    std::string name = (std::filesystem::temp_directory_path() / "zelv-tv.XXXXXX").string();
    mFolder = ::mkdtemp(name.data());
  }
  ~ZelvTvDiagnostics() override { std::filesystem::remove_all(mFolder); }

  std::vector<std::string> Arguments() const {
    return {"--data", mFolder + "/data", "--factory", ZELV_TEST_FACTORY_FILES, "--log", "off"};
  }

  /// What a command prints, up to the line that begins so.
  static std::vector<std::string> Answer(TvProcess& aTv, std::string const& aCommand,
                                         std::string const& aLast) {
    aTv.Say(aCommand);
    std::vector<std::string> lines;
    do {
      lines.push_back(aTv.Line());
    } while (!lines.back().empty() && !lines.back().starts_with(aLast));
    return lines;
  }

  std::string mFolder;
};

TEST_F(ZelvTvDiagnostics, ExplainsAChangeOfAPathThatIsSubscribed) {
  TvProcess tv(Arguments(), mFolder + "/log");
  EXPECT_THAT(tv.Line(), StartsWith("ready "));
  tv.Say(std::string("sub ") + kInterval);
  EXPECT_THAT(tv.Line(), StartsWith("subscribed "));
  EXPECT_THAT(tv.Line(), StartsWith("data "));
  auto const lines = Answer(tv, std::string("explain ") + kInterval, "explained ");
  EXPECT_THAT(lines, Contains(MatchesRegex("explain [0-9a-f-]{36} same-path ZelvTv::TreeListener " +
                                           std::string("/Zelv/Configuration/UPnP/Ping/Interval/"
                                                       "text.. told at once, .*"))));
  EXPECT_THAT(lines.back(),
              "explained " + std::to_string(lines.size() - 1) + " " + std::string(kInterval));
}

TEST_F(ZelvTvDiagnostics, ShowsARequestThatNeverLeftAndTheThreads) {
  TvProcess tv(Arguments(), mFolder + "/log");
  EXPECT_THAT(tv.Line(), StartsWith("ready "));
  tv.Say("get /Zelv[@DeviceId='nobody']/a");
  EXPECT_THAT(tv.Line(), StartsWith("queued "));
  auto const lines = Answer(tv, "stats", "stats ");
  EXPECT_THAT(lines, Contains(MatchesRegex("request [0-9a-f-]{36} [0-9]+[.][0-9]{3} waiting "
                                           "/Zelv.@DeviceId='nobody'./a")));
  EXPECT_THAT(lines, Contains("requests 1"));
  EXPECT_THAT(lines, Contains("thread 1 Quorl - DataController::initialize"));
  EXPECT_THAT(lines, Contains(MatchesRegex("longest provider [0-9]+[.][0-9]{3} getData "
                                           "Zelv::Core::[A-Za-z]+ /Zelv/.*")));
  EXPECT_THAT(lines, Contains("peers 0"));
  EXPECT_EQ(lines.back(), "stats " + std::to_string(lines.size() - 1));
  // At the end of its input it would wait for the answer.
  tv.Signal(SIGTERM);
  EXPECT_EQ(tv.ExitStatus(), 0);
}

}  // namespace
