#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "tests/TvProcess.h"

namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

char const* const kInterval = "/Zelv/Configuration/UPnP/Ping/Interval/text()";
char const* const kName = "/Zelv/Devices/LocalTV/Name/text()";
char const* const kPing = "/Zelv/Configuration/UPnP/Ping";

std::string contentOf(std::string const& aPath) {
  std::ifstream file(aPath);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// Word number aNumber of a line, from 0; words are divided by single blanks.
std::string wordOf(std::string const& aLine, int aNumber) {
  std::size_t begin = 0;
  for (; aNumber > 0 && begin != std::string::npos; --aNumber) {
    begin = aLine.find(' ', begin);
    begin += begin == std::string::npos ? 0 : 1;
  }
  return begin == std::string::npos ? "" : aLine.substr(begin, aLine.find(' ', begin) - begin);
}

/// The message of a command that came by none.
char const* const kNoMessage = "00000000-0000-0000-0000-000000000000";

/// A set that has an identity and no network.
char const* const kReady = "ready [0-9a-f-]{36} -";

class ZelvTv : public testing::Test {
 protected:
  ZelvTv() {
    std::string name = (std::filesystem::temp_directory_path() / "zelv-tv.XXXXXX").string();
    mFolder = ::mkdtemp(name.data());
    std::filesystem::copy(ZELV_TEST_FACTORY_FILES, mFolder + "/factory");
  }
  ~ZelvTv() override { std::filesystem::remove_all(mFolder); }

  std::string Data() const { return mFolder + "/data"; }
  std::string Factory() const { return mFolder + "/factory"; }
  std::string Log() const { return mFolder + "/log"; }

  std::vector<std::string> Arguments() const {
    return {"--data", Data(), "--factory", Factory(), "--log", "notable"};
  }

  /// A set that has said that it is ready.
  std::unique_ptr<TvProcess> Start() {
    auto tv = std::make_unique<TvProcess>(Arguments(), Log());
    EXPECT_THAT(tv->Line(), MatchesRegex(kReady));
    return tv;
  }

  /// Says a line and gives the identifier of the reply, which must begin so.
  static std::string Ask(TvProcess& aTv, std::string const& aLine, std::string const& aWord) {
    aTv.Say(aLine);
    std::string const reply = aTv.Line();
    EXPECT_EQ(wordOf(reply, 0), aWord) << reply;
    EXPECT_THAT(wordOf(reply, 1), MatchesRegex("[0-9a-f-]{36}")) << reply;
    return wordOf(reply, 1);
  }

  static std::string Get(TvProcess& aTv, std::string const& aPath) {
    std::string const id = Ask(aTv, "get " + aPath, "queued");
    std::string const begin = "data " + id + " " + aPath + " ";
    std::string const line = aTv.Line();
    EXPECT_THAT(line, StartsWith(begin));
    return line.substr(std::min(begin.size(), line.size()));
  }

  std::string mFolder;
};

TEST_F(ZelvTv, MakesAFreshDirectoryFromTheFactoryFilesAndWorksInIt) {
  auto const tv = Start();
  EXPECT_EQ(contentOf(Data() + "/Configuration.xml"), contentOf(Factory() + "/Configuration.xml"));
  EXPECT_THAT(contentOf(Data() + "/Devices.xml"), HasSubstr("<Name>Television</Name>"));
  EXPECT_EQ(tv->WorkingDirectory(), std::filesystem::canonical(Data()).string());
}

TEST_F(ZelvTv, AnswersARead) {
  auto const tv = Start();
  EXPECT_EQ(Get(*tv, kInterval), "30");
  EXPECT_EQ(Get(*tv, "/Zelv/Configuration/Services/Service[Name='DataControl']/Port/text()"),
            "4446");
  EXPECT_THAT(Get(*tv, kPing), MatchesRegex("<Ping>.*<Interval>30</Interval>.*</Ping>"));
}

TEST_F(ZelvTv, AWriteIsOnDiskOnceALaterReadIsAnswered) {
  auto const tv = Start();
  Ask(*tv, std::string("set ") + kInterval + " 45", "queued");
  EXPECT_EQ(Get(*tv, kInterval), "45");
  EXPECT_THAT(contentOf(Data() + "/Configuration.xml"), HasSubstr("<Interval>45</Interval>"));
  EXPECT_THAT(contentOf(Factory() + "/Configuration.xml"), HasSubstr("<Interval>30</Interval>"));
}

TEST_F(ZelvTv, KeepsAWriteOverARestart) {
  {
    auto const tv = Start();
    Ask(*tv, std::string("set ") + kInterval + " 45", "queued");
    tv->Say("quit");
    EXPECT_EQ(tv->ExitStatus(), 0);
  }
  EXPECT_EQ(Get(*Start(), kInterval), "45");
}

TEST_F(ZelvTv, AValueOfSeveralLinesIsOneLine) {
  auto const tv = Start();
  std::string const path = "/Zelv/Applications/ActiveApplication/Name/text()";
  std::string const id = Ask(*tv, "sub " + path, "subscribed");
  EXPECT_EQ(tv->Line(), "data " + id + " " + path + " ");
  Ask(*tv, "set " + path + " one\\ntwo\\\\three", "queued");
  EXPECT_EQ(tv->Line(), "data " + id + " " + path + " one\\ntwo\\\\three");
}

TEST_F(ZelvTv, ASubscriberHearsTheValueThenEachChange) {
  auto const tv = Start();
  std::string const id = Ask(*tv, std::string("sub ") + kInterval, "subscribed");
  EXPECT_EQ(tv->Line(), "data " + id + " " + kInterval + " 30");
  Ask(*tv, std::string("set ") + kInterval + " 45", "queued");
  EXPECT_EQ(tv->Line(), "data " + id + " " + kInterval + " 45");
}

TEST_F(ZelvTv, ASubscriberAboveAChangeGetsItsOwnPathReadAgain) {
  auto const tv = Start();
  std::string const id = Ask(*tv, std::string("sub ") + kPing, "subscribed");
  EXPECT_THAT(tv->Line(), HasSubstr("<Interval>30</Interval>"));
  Ask(*tv, std::string("set ") + kInterval + " 45", "queued");
  std::string const line = tv->Line();
  EXPECT_THAT(line, StartsWith("data " + id + " " + kPing + " <Ping>"));
  EXPECT_THAT(line, HasSubstr("<Interval>45</Interval>"));
}

TEST_F(ZelvTv, NothingComesOnceASubscriptionHasEnded) {
  auto const tv = Start();
  std::string const id = Ask(*tv, std::string("sub ") + kInterval, "subscribed");
  EXPECT_EQ(tv->Line(), "data " + id + " " + kInterval + " 30");
  EXPECT_EQ(Ask(*tv, "unsub " + id, "unsubscribed"), id);
  Ask(*tv, std::string("set ") + kInterval + " 45", "queued");
  EXPECT_EQ(Get(*tv, kInterval), "45") << "the next line is the answer, with no change before it";
  tv->Say("unsub " + id);
  EXPECT_EQ(tv->Line(), "error no subscription " + id);
}

TEST_F(ZelvTv, AReadOfWhatIsNotThereFails) {
  auto const tv = Start();
  std::string const id = Ask(*tv, "get /Zelv/Configuration/Nothing/text()", "queued");
  EXPECT_EQ(tv->Line(), "failed " + id);
  EXPECT_EQ(Get(*tv, kInterval), "30") << "one failure, one line";
}

TEST_F(ZelvTv, AReadUnderNoProviderFailsTwice) {
  auto const tv = Start();
  std::string const id = Ask(*tv, "get /Zelv/Other/x", "queued");
  EXPECT_EQ(tv->Line(), "failed " + id);
  EXPECT_EQ(tv->Line(), "failed " + id);
  EXPECT_EQ(Get(*tv, kInterval), "30");
}

TEST_F(ZelvTv, CarriesOutItsOwnCommands) {
  auto const tv = Start();
  std::string const self = Get(*tv, "/Zelv/Devices/LocalTV/@ID");
  for (std::string const& device : {std::string("-"), self, std::string("Television")}) {
    std::string const id = Ask(*tv, "command " + device + " <Echo>a b</Echo>", "queued");
    EXPECT_EQ(tv->Line(), std::string("command - ") + kNoMessage + " <Echo>a b</Echo>");
    EXPECT_EQ(tv->Line(), "returned " + id + " <Echo>a b</Echo>");
  }
  std::string const id = Ask(*tv, "command - <ShowMessage>tea &amp; cake</ShowMessage>", "queued");
  EXPECT_THAT(tv->Line(), StartsWith("command - "));
  EXPECT_EQ(tv->Line(), "message - tea & cake");
  EXPECT_EQ(tv->Line(), "returned " + id + " shown");
}

TEST_F(ZelvTv, ReadsItsOwnTreeByItsIdTooAndWaitsInVainForAStrangers) {
  auto const tv = Start();
  std::string const self = Get(*tv, "/Zelv/Devices/LocalTV/@ID");
  EXPECT_EQ(Get(*tv, "/Zelv[@DeviceId='" + self + "']/Devices/LocalTV/Name/text()"), "Television");
  Ask(*tv, "get /Zelv[@DeviceId='b']/Devices/LocalTV/Name/text()", "queued");
  Ask(*tv, "sub /Zelv[@DeviceId='b']/Devices/LocalTV/Name/text()", "subscribed");
  auto const begin = std::chrono::steady_clock::now();
  tv->Say("quit");
  EXPECT_TRUE(tv->SaysNothingMore());
  EXPECT_EQ(tv->ExitStatus(), 0);
  auto const taken = std::chrono::steady_clock::now() - begin;
  EXPECT_GE(taken, std::chrono::milliseconds(4500)) << "the answer might still have come";
  EXPECT_LT(taken, std::chrono::seconds(30));
}

TEST_F(ZelvTv, WaitsForTheReturnOfACommandAtItsEnd) {
  auto const tv = Start();
  tv->Write("command - <Echo>last</Echo>");
  tv->EndInput();
  EXPECT_THAT(tv->Rest(), HasSubstr(" <Echo>last</Echo>\nreturned "));
  EXPECT_EQ(tv->ExitStatus(), 0);
}

TEST_F(ZelvTv, HasAModelAndWarnsOfNone) {
  auto const tv = Start();
  EXPECT_EQ(Get(*tv, "/Zelv/Devices/LocalTV/Model/text()"), "zelv-tv");
  EXPECT_THAT(contentOf(Log()), Not(HasSubstr("model")));
}

TEST_F(ZelvTv, ATimerGoesOffOnce) {
  auto const tv = Start();
  std::string const id = Ask(*tv, "timer 1 tea time", "timer");
  EXPECT_EQ(tv->Line(), "fired " + id + " tea time");
  std::string const later = Ask(*tv, "timer 30 later", "timer");
  EXPECT_EQ(tv->Line(), "fired " + later + " later");
}

TEST_F(ZelvTv, WrongInputGivesOneClearLineAndTheNextCommandWorks) {
  auto const tv = Start();
  struct {
    char const* say;
    char const* answer;
  } const rows[] = {
      {"frob", "error no command 'frob'; help lists them"},
      {"get", "error an argument is missing; usage: get PATH"},
      {"get /Zelv/a b", "error 'b' is too much; usage: get PATH"},
      {"set /Zelv/a", "error a value is missing; usage: set PATH VALUE"},
      {"set /Zelv/a \\q",
       R"(error a backslash in a value begins \\n, \\\\ or \\xHH; usage: set PATH VALUE)"},
      {"set /Elsewhere b", "error Cannot set data on remote XPath."},
      {"add /Elsewhere b", "error Cannot add data to remote XPath."},
      {"unsub x", "error no subscription x"},
      {"timer soon tea", "error 'soon' is no number of milliseconds; usage: timer MS NAME"},
      {"set /Zelv[@DeviceId='b']/Devices/LocalTV/Name/text() x",
       "error Cannot set data on remote XPath."},
      {"command", "error an argument is missing; usage: command DEVICE XML"},
      {"command -", "error a value is missing; usage: command DEVICE XML"},
      {"command - ", "error aCommand parameter is empty!"},
      {"command 'Living room <A></A>", "error a quote is not closed; usage: command DEVICE XML"},
      {"command nobody <A></A>", "error no device 'nobody'"},
      {"quit now", "error 'now' is too much; usage: quit"},
  };
  for (auto const& row : rows) {
    tv->Say(row.say);
    EXPECT_EQ(tv->Line(), row.answer);
  }
  tv->Say(std::string((std::size_t{1} << 20U) + 1, 'x'));
  EXPECT_EQ(tv->Line(), "error a line may hold 1048576 bytes");
  tv->Write(std::string("get \0\xff\xfe\n", 8));
  EXPECT_THAT(tv->Line(), StartsWith("queued "));
  EXPECT_EQ(Get(*tv, kInterval), "30");
}

TEST_F(ZelvTv, HelpIsForPeopleAndStillOneWordALine) {
  auto const tv = Start();
  tv->Say("help");
  for (char const* command : {"get", "set", "add", "sub", "unsub", "devices", "command", "timer",
                              "explain", "stats", "help", "quit"}) {
    EXPECT_THAT(tv->Line(), StartsWith(std::string("help ") + command + " "));
  }
}

TEST_F(ZelvTv, ShowsNoPromptToAProgram) {
  auto const tv = Start();
  tv->Say("quit");
  EXPECT_TRUE(tv->SaysNothingMore());
  EXPECT_EQ(tv->ExitStatus(), 0);
}

TEST_F(ZelvTv, ShowsAPromptToAPersonWheneverItListens) {
  TvProcess tv(Arguments(), Log(), TvProcess::Channel::Terminal);
  tv.WaitFor("ready ");
  tv.WaitFor(" -\r\nzelv> ");
  tv.Say("get");
  tv.WaitFor("error an argument is missing; usage: get PATH\r\nzelv> ");
  tv.Say("timer 1 tea");
  tv.WaitFor("fired ");
  tv.WaitFor(" tea\r\nzelv> ");
  tv.Say("quit");
  EXPECT_EQ(tv.ExitStatus(), 0);
}

TEST_F(ZelvTv, LeavesTheTerminalOnAFreshLineAtASignal) {
  TvProcess tv(Arguments(), Log(), TvProcess::Channel::Terminal);
  tv.WaitFor("zelv> ");
  tv.Signal(SIGTERM);
  EXPECT_EQ(tv.Rest(), "\r\n");
  EXPECT_EQ(tv.ExitStatus(), 0);
}

TEST_F(ZelvTv, TheEndOfTheInputEndsItWithEveryAnswerGiven) {
  auto const tv = Start();
  std::string const id = Ask(*tv, std::string("sub ") + kPing, "subscribed");
  EXPECT_THAT(tv->Line(), HasSubstr("30"));
  tv->Write(std::string("set ") + kInterval + " 45\nget " + kInterval);
  tv->EndInput();
  EXPECT_THAT(tv->Line(), StartsWith("queued "));
  EXPECT_THAT(tv->Line(), StartsWith("queued "));
  EXPECT_THAT(tv->Line(), HasSubstr(std::string(kInterval) + " 45"));
  EXPECT_THAT(tv->Line(), StartsWith("data " + id + " " + kPing + " <Ping>"));
  EXPECT_TRUE(tv->SaysNothingMore());
  EXPECT_EQ(tv->ExitStatus(), 0);
}

TEST_F(ZelvTv, EndsInOrderOnASignal) {
  for (int const signal : {SIGTERM, SIGINT, SIGHUP}) {
    auto const tv = Start();
    Ask(*tv, "timer 60000 never", "timer");
    tv->Signal(signal);
    EXPECT_EQ(tv->ExitStatus(), 0) << signal;
  }
}

TEST_F(ZelvTv, EndsOnASignalThoughNobodyReadsWhatItPrints) {
  auto const tv = Start();
  std::string commands;
  for (int i = 0; i < 2000; ++i) {
    commands += "help\n";
  }
  tv->Write(commands);
  EXPECT_THAT(tv->Line(), StartsWith("help "));
  tv->Signal(SIGTERM);
  EXPECT_EQ(tv->ExitStatus(), 0);
}

TEST_F(ZelvTv, EndsWithAFailureWhenItsReaderHasGone) {
  auto const tv = Start();
  tv->EndOutput();
  tv->Say("help");
  EXPECT_EQ(tv->ExitStatus(), 1);
}

TEST_F(ZelvTv, RepairsACorruptFileAtTheStart) {
  { Start(); }
  for (char const* content : {"<Configuration><UPnP>", "", "\x01\x02 binary"}) {
    std::ofstream(Data() + "/Configuration.xml") << content;
    auto const tv = Start();
    EXPECT_EQ(Get(*tv, kInterval), "30");
    EXPECT_EQ(contentOf(Data() + "/Configuration.xml"),
              contentOf(Factory() + "/Configuration.xml"));
  }
  EXPECT_THAT(contentOf(Log()),
              HasSubstr("ZelvFileUtil::checkIsFileAvailable: File successfully restored!"));
}

TEST_F(ZelvTv, HasOneIdentityForEver) {
  TvProcess first(Arguments(), Log());
  std::string const line = first.Line();
  EXPECT_THAT(line, MatchesRegex(kReady));
  first.Say("quit");
  EXPECT_EQ(first.ExitStatus(), 0);
  TvProcess second(Arguments(), Log());
  EXPECT_EQ(second.Line(), line);
  EXPECT_EQ(Get(second, "/Zelv/Devices/LocalTV/@ID"), wordOf(line, 1));
}

TEST_F(ZelvTv, TakesAndKeepsANameFromTheFirstStartOn) {
  auto arguments = Arguments();
  arguments.insert(arguments.end(), {"--name", "Tom's \"TV\""});
  {
    TvProcess tv(arguments, Log());
    EXPECT_THAT(tv.Line(), MatchesRegex(kReady));
    EXPECT_EQ(Get(tv, kName), "Tom's \"TV\"");
  }
  EXPECT_EQ(Get(*Start(), kName), "Tom's \"TV\"");
  arguments.back() = "Kitchen";
  TvProcess tv(arguments, Log());
  EXPECT_THAT(tv.Line(), MatchesRegex(kReady));
  EXPECT_EQ(Get(tv, kName), "Kitchen");
}

// A name is written before the library looks whether the directory is new, and a directory may be
// older than the picture.
TEST_F(ZelvTv, HasThePictureOfItsPackageWhereItWorks) {
  std::string const picture = contentOf(Factory() + "/tv.png");
  ASSERT_FALSE(picture.empty());
  auto arguments = Arguments();
  arguments.insert(arguments.end(), {"--name", "Kitchen"});
  {
    TvProcess tv(arguments, Log());
    EXPECT_THAT(tv.Line(), MatchesRegex(kReady));
    EXPECT_TRUE(contentOf(Data() + "/tv.png") == picture);
  }
  std::filesystem::remove(Data() + "/tv.png");
  auto const tv = Start();
  EXPECT_TRUE(contentOf(Data() + "/tv.png") == picture);
}

TEST_F(ZelvTv, StartsWithoutThePictureOfItsPackage) {
  std::filesystem::remove(Factory() + "/tv.png");
  Start()->Say("quit");
  EXPECT_FALSE(std::filesystem::exists(Data() + "/tv.png"));
}

TEST_F(ZelvTv, SaysSoWhenANameCannotBeStored) {
  std::filesystem::remove(Factory() + "/Devices.xml");
  auto arguments = Arguments();
  arguments.insert(arguments.end(), {"--name", "Kitchen"});
  TvProcess tv(arguments, Log());
  EXPECT_TRUE(tv.SaysNothingMore());
  EXPECT_EQ(tv.ExitStatus(), 1);
  EXPECT_THAT(contentOf(Log()), HasSubstr("zelv-tv: --name: " + Data() + "/Devices.xml is not"));
}

TEST_F(ZelvTv, KnowsNobodyWithoutANetwork) {
  auto const tv = Start();
  tv->Say("devices");
  EXPECT_EQ(tv->Line(), "devices 0");
}

TEST_F(ZelvTv, StartsWithItsDiscoverySwitchedOff) {
  std::string configuration = contentOf(Factory() + "/Configuration.xml");
  std::string const on = "<ZelvDiscovery>true";
  ASSERT_NE(configuration.find(on), std::string::npos);
  configuration.replace(configuration.find(on), on.size(), "<ZelvDiscovery>false");
  std::ofstream(Factory() + "/Configuration.xml") << configuration;
  auto const tv = Start();
  tv->Say("devices");
  EXPECT_EQ(tv->Line(), "devices 0");
}

TEST_F(ZelvTv, SaysSoWhenTheTreeDoesNotComeUp) {
  std::filesystem::remove(Factory() + "/Configuration.xml");
  TvProcess tv(Arguments(), Log());
  EXPECT_TRUE(tv.SaysNothingMore());
  EXPECT_EQ(tv.ExitStatus(), 1);
  EXPECT_THAT(contentOf(Log()),
              HasSubstr("zelv-tv: the library did not start; the log says why\n"));
}

TEST_F(ZelvTv, ASilentLogIsSilent) {
  TvProcess tv({"--data", Data(), "--factory", Factory(), "--log", "off"}, Log());
  EXPECT_THAT(tv.Line(), MatchesRegex(kReady));
  tv.Say("quit");
  EXPECT_EQ(tv.ExitStatus(), 0);
  EXPECT_EQ(contentOf(Log()), "");
}

TEST_F(ZelvTv, RefusesArgumentsThatAreWrongInOneLine) {
  std::vector<std::vector<std::string>> const rows = {
      {"--frob"},
      {"--log", "loud"},
      {"--factory", mFolder + "/nowhere"},
      {"--data", mFolder + "/a blank"},
      {"--name", "Tom & Ann"},
      {"word"},
  };
  for (auto const& arguments : rows) {
    std::filesystem::remove(Log());
    TvProcess tv(arguments, Log());
    EXPECT_TRUE(tv.SaysNothingMore());
    EXPECT_EQ(tv.ExitStatus(), 2);
    EXPECT_THAT(contentOf(Log()), MatchesRegex("zelv-tv: [^\n]+\n")) << arguments.front();
  }
}

}  // namespace
