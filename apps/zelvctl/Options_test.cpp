#include "apps/zelvctl/Options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace ZelvCtl {
namespace {

using testing::ElementsAre;
using testing::MatchesRegex;

struct Parsed {
  Options options;
  bool hasWork = false;
  int status = -1;
  std::string out;
  std::string error;
};

Parsed parse(std::vector<char const*> aArguments) {
  aArguments.insert(aArguments.begin(), "zelvctl");
  Parsed parsed;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  parsed.hasWork =
      parsed.options.parse(static_cast<int>(aArguments.size()), aArguments.data(), parsed.status);
  parsed.error = testing::internal::GetCapturedStderr();
  parsed.out = testing::internal::GetCapturedStdout();
  return parsed;
}

TEST(ZelvctlOptions, HaveDefaultsThatFitAHomeAsItLeavesTheFactory) {
  Parsed const parsed = parse({"devices"});
  ASSERT_TRUE(parsed.hasWork);
  EXPECT_EQ(parsed.options.verb, Options::Devices);
  EXPECT_FALSE(parsed.options.watch);
  EXPECT_FALSE(parsed.options.json);
  EXPECT_EQ(parsed.options.group, "239.255.44.46");
  EXPECT_EQ(parsed.options.port, "4451");
  EXPECT_EQ(parsed.options.interval, 10);
  EXPECT_EQ(parsed.options.timeout, 3);
  EXPECT_EQ(parsed.options.name, "zelvctl");
  EXPECT_EQ(parsed.options.id, "");
}

TEST(ZelvctlOptions, MayStandBeforeAndBehindTheVerb) {
  Parsed const parsed =
      parse({"--json", "--address", "10.77.0.3", "devices", "--watch", "--interval", "1", "--name",
             "Tom & Ann", "--group", "239.1.2.3", "--port", "5000", "--timeout", "0.5", "--id",
             "{6F1D2A3E-0C57-4B8E-9A41-5D7E6B3C2F10}"});
  ASSERT_TRUE(parsed.hasWork) << parsed.error;
  EXPECT_TRUE(parsed.options.json);
  EXPECT_TRUE(parsed.options.watch);
  EXPECT_EQ(parsed.options.address, "10.77.0.3");
  EXPECT_EQ(parsed.options.interval, 1);
  EXPECT_EQ(parsed.options.name, "Tom & Ann");
  EXPECT_EQ(parsed.options.group, "239.1.2.3");
  EXPECT_EQ(parsed.options.port, "5000");
  EXPECT_EQ(parsed.options.timeout, 0.5);
  EXPECT_EQ(parsed.options.id, "6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10");
}

TEST(ZelvctlOptions, NameTheDeviceAndWhatIsWantedOfIt) {
  Parsed const get = parse({"get", "Kitchen", "/Zelv/A/text()", "--json"});
  ASSERT_TRUE(get.hasWork) << get.error;
  EXPECT_EQ(get.options.verb, Options::Get);
  EXPECT_EQ(get.options.device, "Kitchen");
  EXPECT_EQ(get.options.path, "/Zelv/A/text()");
  EXPECT_TRUE(get.options.json);
  EXPECT_EQ(parse({"watch", "Kitchen", "/Zelv/A"}).options.verb, Options::Watch);
  Parsed const set = parse({"set", "Kitchen", "/Zelv[@DeviceId='x']/A", "--", "-5"});
  ASSERT_TRUE(set.hasWork) << set.error;
  EXPECT_EQ(set.options.verb, Options::Set);
  EXPECT_THAT(set.options.values, ElementsAre("-5"));
}

TEST(ZelvctlOptions, NameACommandAndWhatIsExpectedOfIt) {
  Parsed const one = parse({"command", "10.77.0.1", "<Echo>hi there</Echo>"});
  ASSERT_TRUE(one.hasWork) << one.error;
  EXPECT_EQ(one.options.verb, Options::Command);
  EXPECT_EQ(one.options.command, "<Echo>hi there</Echo>");
  EXPECT_EQ(one.options.returns, 1);
  EXPECT_FALSE(one.options.noWait);
  EXPECT_TRUE(parse({"command", "--no-wait", "tv", "<Echo/>"}).options.noWait);
  EXPECT_EQ(parse({"command", "tv", "<Echo/>", "--returns", "3"}).options.returns, 3);
}

TEST(ZelvctlOptions, NameInputOfAnyTypeAndAsManyValuesAsThereAre) {
  Parsed const parsed = parse({"input", "tv", "", "UP", "<b>x</b>", ""});
  ASSERT_TRUE(parsed.hasWork) << parsed.error;
  EXPECT_EQ(parsed.options.verb, Options::Input);
  EXPECT_EQ(parsed.options.inputType, "");
  EXPECT_THAT(parsed.options.values, ElementsAre("UP", "<b>x</b>", ""));
}

TEST(ZelvctlOptions, NameAssetsAndWhereTheyGo) {
  Parsed const parsed = parse({"--id", "6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10", "asset", "tv", "a",
                               "/b[@x=\"1\"]", "--id", "A2CE", "-o", "/tmp", "--id", "x"});
  ASSERT_TRUE(parsed.hasWork) << parsed.error;
  EXPECT_EQ(parsed.options.verb, Options::Asset);
  EXPECT_EQ(parsed.options.device, "tv");
  EXPECT_THAT(parsed.options.assets, ElementsAre("a", "/b[@x=\"1\"]"));
  EXPECT_THAT(parsed.options.assetIds, ElementsAre("A2CE", "x"));
  EXPECT_EQ(parsed.options.id, "6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10");
  EXPECT_EQ(parsed.options.folder, "/tmp");
  EXPECT_FALSE(parsed.options.list);
}

TEST(ZelvctlOptions, NamePackagesAndAssetsInOne) {
  Parsed const one = parse({"asset", "tv", "--package", "test", "a", "b", "--list", "--json"});
  ASSERT_TRUE(one.hasWork) << one.error;
  EXPECT_THAT(one.options.packages, ElementsAre("test"));
  EXPECT_THAT(one.options.assets, ElementsAre("a", "b"));
  EXPECT_TRUE(one.options.list);
  EXPECT_TRUE(one.options.json);
  EXPECT_EQ(one.options.folder, ".");
  Parsed const two =
      parse({"asset", "tv", "--package", "p", "--package", "q", "--package-id", "r"});
  ASSERT_TRUE(two.hasWork) << two.error;
  EXPECT_THAT(two.options.packages, ElementsAre("p", "q"));
  EXPECT_THAT(two.options.packageIds, ElementsAre("r"));
}

TEST(ZelvctlOptions, AskForNoMoreThanASetAnswersAtATime) {
  std::vector<char const*> arguments = {"asset", "tv"};
  arguments.resize(arguments.size() + 1024, "a");
  EXPECT_TRUE(parse(arguments).hasWork);
  arguments.push_back("a");
  EXPECT_EQ(parse(arguments).error, "zelvctl: one request may ask for 1024 things at most\n");
}

TEST(ZelvctlOptions, TellWhatIsAnsweredToCommands) {
  EXPECT_EQ(parse({"serve"}).options.verb, Options::Serve);
  EXPECT_EQ(parse({"serve"}).options.answer, std::nullopt);
  EXPECT_EQ(parse({"serve", "--answer", "<Yes/>"}).options.answer, "<Yes/>");
  EXPECT_EQ(parse({"serve", "--answer", ""}).options.answer, "");
}

TEST(ZelvctlOptions, RefuseWhatIsWrongInOneLine) {
  std::string const longPath = "/Zelv/" + std::string(2048, 'a');
  std::string const longAsset = "/" + std::string(256, 'a');
  std::vector<std::vector<char const*>> const rows = {
      {},
      {"frob"},
      {"devices", "--frob"},
      {"devices", "now"},
      {"devices", "--timeout", "0"},
      {"devices", "--timeout", "soon"},
      {"devices", "--interval", "0"},
      {"devices", "--address", "here"},
      {"devices", "--group", "239.255.44"},
      {"devices", "--port", "65536"},
      {"devices", "--port", "x"},
      {"devices", "--name", ""},
      {"devices", "--name", "a\nb"},
      {"devices", "--id", "me"},
      {"get"},
      {"get", "tv"},
      {"get", "", "/Zelv/A"},
      {"get", "tv", "Zelv/A"},
      {"get", "tv", longPath.c_str()},
      {"get", "tv", "/Zelv/A", "more"},
      {"get", "tv", "/Zelv/A", "--watch"},
      {"set", "tv", "/Zelv/A"},
      {"set", "tv", "/Zelv/A", "a < b"},
      {"set", "tv", "/Zelv/A", "one", "two"},
      {"command", "tv", "text"},
      {"command", "tv", "<Echo>"},
      {"command", "tv", "<Echo/>", "--returns", "0"},
      {"command", "tv", "<Echo/>", "--returns", "2", "--no-wait"},
      {"input", "tv", "Key"},
      {"input", "tv", "Key", "<b>"},
      {"asset"},
      {"asset", "tv"},
      {"asset", "tv", ""},
      {"asset", "tv", "a'b"},
      {"asset", "tv", "a[1]"},
      {"asset", "tv", "/a[@x='1']"},
      {"asset", "tv", "/a<b"},
      {"asset", "tv", "/a\nb"},
      {"asset", "tv", longAsset.c_str()},
      {"asset", "tv", "--id", "a\"b"},
      {"asset", "tv", "--id"},
      {"asset", "tv", "--package", ""},
      {"asset", "tv", "--package-id", "a&b"},
      {"asset", "tv", "a", "--package", "p", "--package-id", "q"},
      {"asset", "tv", "a", "--list", "-o", "x"},
      {"serve", "--answer", "<b>"},
      {"serve", "tv"},
  };
  for (auto const& row : rows) {
    Parsed const parsed = parse(row);
    EXPECT_FALSE(parsed.hasWork) << (row.empty() ? "" : row[0]);
    EXPECT_EQ(parsed.status, 2);
    EXPECT_THAT(parsed.error, MatchesRegex("zelvctl: [^\n]+\n"));
    EXPECT_EQ(parsed.out, "");
  }
}

TEST(ZelvctlOptions, ShowHelpWhenAsked) {
  for (std::vector<char const*> const& row :
       {std::vector<char const*>{"--help"}, std::vector<char const*>{"devices", "--help"}}) {
    Parsed const parsed = parse(row);
    EXPECT_FALSE(parsed.hasWork);
    EXPECT_EQ(parsed.status, 0);
    EXPECT_NE(parsed.out.find("devices"), std::string::npos);
    EXPECT_EQ(parsed.error, "");
  }
}

}  // namespace
}  // namespace ZelvCtl
