#include "apps/zelv-tv/Session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include "apps/zelv-tv/testing/CommandsMock.h"
#include "apps/zelv-tv/testing/TreeMock.h"

namespace ZelvTv {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Return;
using testing::StartsWith;
using testing::Throw;
using Zelv::GUID;

class TimersMock : public virtual Zelv::IAppTimer {
 public:
  MOCK_METHOD(GUID, createTimer, (unsigned int, int, std::string const&, Zelv::IBaseTimerCallback*),
              (override));
  MOCK_METHOD(void, destroyTimer, (GUID const&, Zelv::IBaseTimerCallback*), (override));
  MOCK_METHOD(void, resetTimer, (GUID const&, unsigned int, int), (override));
};

class SessionTest : public testing::Test {
 protected:
  std::string const mIdText = "6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10";
  GUID const mId{mIdText};
  testing::StrictMock<TreeMock> mTree;
  testing::StrictMock<TimersMock> mTimers;
  testing::NiceMock<CommandsMock> mCommands;
  EventQueue mEvents;
  OpenQuestions mQuestions{mEvents};
  TreeListener mListener{mEvents, mQuestions, mTimers};
  DeviceWatch mDevices{mEvents, mTree};
  Self mSelf;
  DeviceFinder mFinder{mSelf, mDevices};
  SentCommands mSent{mEvents, mQuestions, mCommands};
  Session mSession{{mTree, mTimers, mListener, mQuestions, mDevices, mFinder, mSent}};
};

TEST_F(SessionTest, ReadsThroughTheTree) {
  EXPECT_CALL(mTree, requestData("/Zelv/a[b='c d']", nullptr, &mListener)).WillOnce(Return(mId));
  EXPECT_THAT(mSession.Execute("get /Zelv/a[b='c d']"),
              ElementsAre("queued " + mIdText + " /Zelv/a[b='c d']"));
}

TEST_F(SessionTest, WaitsForTheAnswerOfAReadAndForNoOther) {
  EXPECT_CALL(mTree, requestData).WillRepeatedly(Return(mId));
  mSession.Execute("get /Zelv[@DeviceId='b']/a");
  mListener.onData("/Zelv/other", "", nullptr, GUID::createGUID());
  EXPECT_FALSE(mQuestions.AreAnswered());
  mListener.onData("/Zelv[@DeviceId='b']/a", "", nullptr, mId);
  EXPECT_TRUE(mQuestions.AreAnswered());
  mSession.Execute("get /Zelv/a");
  mListener.onStatus(Zelv::StatusInformation(std::string()), mId);
  EXPECT_TRUE(mQuestions.AreAnswered());
}

TEST_F(SessionTest, SendsACommandToItself) {
  mSelf.onData("/Zelv/Devices/LocalTV/@ID", "self-id", nullptr, GUID::nullGUID);
  EXPECT_CALL(mCommands, executeCommand("<A>b c</A>", "self-id", testing::NotNull()))
      .WillOnce(Return(mId));
  EXPECT_THAT(mSession.Execute("command - <A>b c</A>"),
              ElementsAre("queued " + mIdText + " self-id"));
}

TEST_F(SessionTest, SendsNoCommandWithoutADeviceOrAText) {
  EXPECT_CALL(mCommands, executeCommand).Times(0);
  EXPECT_THAT(mSession.Execute("command tom <A></A>"), ElementsAre("error no device 'tom'"));
  EXPECT_THAT(mSession.Execute("command -"),
              ElementsAre("error a value is missing; usage: command DEVICE XML"));
}

TEST_F(SessionTest, TellsWhatTheLibraryRefusesOfACommand) {
  EXPECT_CALL(mCommands, executeCommand)
      .WillOnce(Throw(std::invalid_argument("aCommand parameter is empty!")));
  EXPECT_THAT(mSession.Execute("command - "), ElementsAre("error aCommand parameter is empty!"));
  EXPECT_TRUE(mQuestions.AreAnswered());
}

TEST_F(SessionTest, WritesTheValueWithItsLineFeeds) {
  EXPECT_CALL(mTree, setData("/Zelv/a", "b \nc", &mListener, true)).WillOnce(Return(mId));
  EXPECT_THAT(mSession.Execute("set /Zelv/a b \\nc"),
              ElementsAre("queued " + mIdText + " /Zelv/a"));
}

TEST_F(SessionTest, WritesAnEmptyValueOnlyWhenItIsThere) {
  EXPECT_CALL(mTree, setData("/Zelv/a", "", &mListener, true)).WillOnce(Return(mId));
  EXPECT_THAT(mSession.Execute("set /Zelv/a "), ElementsAre("queued " + mIdText + " /Zelv/a"));
  EXPECT_THAT(mSession.Execute("set /Zelv/a"),
              ElementsAre("error a value is missing; usage: set PATH VALUE"));
}

TEST_F(SessionTest, AddsThroughTheTree) {
  EXPECT_CALL(mTree, addData("/Zelv/a", "<b/>", &mListener, true)).WillOnce(Return(mId));
  EXPECT_THAT(mSession.Execute("add /Zelv/a <b/>"), ElementsAre("queued " + mIdText + " /Zelv/a"));
}

TEST_F(SessionTest, EndsASubscriptionOnce) {
  EXPECT_CALL(mTree, subscribeData("/Zelv/a", nullptr, &mListener)).WillOnce(Return(mId));
  EXPECT_CALL(mTree, unsubscribeData(mId));
  EXPECT_THAT(mSession.Execute("sub /Zelv/a"), ElementsAre("subscribed " + mIdText + " /Zelv/a"));
  EXPECT_THAT(mSession.Execute("unsub " + mIdText), ElementsAre("unsubscribed " + mIdText));
  EXPECT_THAT(mSession.Execute("unsub " + mIdText),
              ElementsAre("error no subscription " + mIdText));
}

TEST_F(SessionTest, MakesATimerThatGoesOffOnce) {
  EXPECT_CALL(mTimers, createTimer(20, 1, "tea time", &mListener)).WillOnce(Return(mId));
  EXPECT_THAT(mSession.Execute("timer 20 tea time"), ElementsAre("timer " + mIdText + " tea time"));
}

TEST_F(SessionTest, TellsWhatTheTreeRefuses) {
  EXPECT_CALL(mTree, setData).WillOnce(Throw(std::runtime_error("Cannot\nset")));
  EXPECT_THAT(mSession.Execute("set /Other b"), ElementsAre("error Cannot\\nset"));
}

TEST_F(SessionTest, AnswersWrongInputWithOneLineThatSaysWhatIsWrong) {
  EXPECT_THAT(mSession.Execute("frob x"), ElementsAre("error no command 'frob'; help lists them"));
  EXPECT_THAT(mSession.Execute("\x1b[A"),
              ElementsAre("error no command '\\x1b[A'; help lists them"));
  EXPECT_THAT(mSession.Execute("get"),
              ElementsAre("error an argument is missing; usage: get PATH"));
  EXPECT_THAT(mSession.Execute("get a b"), ElementsAre("error 'b' is too much; usage: get PATH"));
  EXPECT_THAT(mSession.Execute("quit now"), ElementsAre("error 'now' is too much; usage: quit"));
  EXPECT_THAT(mSession.Execute("timer soon tea"),
              ElementsAre("error 'soon' is no number of milliseconds; usage: timer MS NAME"));
  EXPECT_FALSE(mSession.HasEnded());
}

TEST_F(SessionTest, PassesOverBlankLines) {
  EXPECT_THAT(mSession.Execute(""), IsEmpty());
  EXPECT_THAT(mSession.Execute("   "), IsEmpty());
}

TEST_F(SessionTest, HelpNamesEveryCommand) {
  EXPECT_THAT(mSession.Execute("help"),
              ElementsAre(StartsWith("help get PATH "), StartsWith("help set PATH VALUE "),
                          StartsWith("help add PATH VALUE "), StartsWith("help sub PATH "),
                          StartsWith("help unsub ID "), StartsWith("help devices "),
                          StartsWith("help command DEVICE XML "), StartsWith("help timer MS NAME "),
                          StartsWith("help explain PATH "), StartsWith("help stats "),
                          StartsWith("help help "), StartsWith("help quit ")));
}

TEST_F(SessionTest, CountsTheDevicesOfAnEmptyHome) {
  EXPECT_THAT(mSession.Execute("devices"), ElementsAre("devices 0"));
  EXPECT_THAT(mSession.Execute("devices now"),
              ElementsAre("error 'now' is too much; usage: devices"));
}

TEST_F(SessionTest, TellsThatThereIsNothingToExplainWithoutASet) {
  EXPECT_THAT(mSession.Execute("explain /Zelv/a[b = 'c d']"),
              ElementsAre("explained 0 /Zelv/a[b = 'c d']"));
  EXPECT_THAT(mSession.Execute("explain"),
              ElementsAre("error an argument is missing; usage: explain PATH"));
  EXPECT_THAT(mSession.Execute("stats"), ElementsAre("error the set does not run"));
  EXPECT_THAT(mSession.Execute("stats all"), ElementsAre("error 'all' is too much; usage: stats"));
}

TEST_F(SessionTest, QuitEndsIt) {
  EXPECT_THAT(mSession.Execute("quit"), IsEmpty());
  EXPECT_TRUE(mSession.HasEnded());
}

TEST_F(SessionTest, ATimerIsDestroyedFromItsOwnCallback) {
  EXPECT_CALL(mTimers, destroyTimer(mId, nullptr));
  mListener.onTimer("tea\ntime", mId);
  EXPECT_THAT(mEvents.Take(), ElementsAre("fired " + mIdText + " tea\\ntime"));
}

TEST_F(SessionTest, AValueIsOneLine) {
  mListener.onData("/Zelv/a", "b\nc\\d", nullptr, mId);
  mListener.onData("/Zelv/a", "", nullptr, mId);
  EXPECT_THAT(mEvents.Take(), ElementsAre("data " + mIdText + " /Zelv/a b\\nc\\\\d",
                                          "data " + mIdText + " /Zelv/a "));
}

TEST_F(SessionTest, AFailureShowsItsTextWhereThereIsOne) {
  mListener.onStatus(Zelv::StatusInformation(std::runtime_error("lost")), mId);
  mListener.onStatus(Zelv::StatusInformation(std::string("kept")), mId);
  EXPECT_THAT(mEvents.Take(), ElementsAre("failed " + mIdText, "failed " + mIdText + " kept"));
}

}  // namespace
}  // namespace ZelvTv
