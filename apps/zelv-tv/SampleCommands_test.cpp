#include "apps/zelv-tv/SampleCommands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <map>
#include <optional>
#include <vector>

#include "apps/zelv-tv/testing/CommandsMock.h"

namespace ZelvTv {
namespace {

using testing::ElementsAre;
using testing::NiceMock;
using testing::StartsWith;
using Zelv::CommandArgs;
using Zelv::GUID;

class SampleCommandsTest : public testing::Test {
 protected:
  SampleCommandsTest() {
    ON_CALL(mCommands, registerCommandHandler)
        .WillByDefault([this](std::string const& aName, Zelv::IBaseCommandHandler* aHandler) {
          mHandlers[aName] = aHandler;
          mHandles.push_back(GUID::createGUID());
          return mHandles.back();
        });
    mSamples.emplace(mEvents, mCommands,
                     ReturnSender::Way{[this](std::string const& aValue, CommandArgs const&) {
                                         mSent.set_value(aValue);
                                       },
                                       [] {}});
  }

  NiceMock<CommandsMock> mCommands;
  std::map<std::string, Zelv::IBaseCommandHandler*> mHandlers;
  std::vector<GUID> mHandles;
  std::promise<std::string> mSent;
  EventQueue mEvents;
  std::optional<SampleCommands> mSamples;
};

TEST_F(SampleCommandsTest, EchoReturnsTheTextThatItGot) {
  EXPECT_EQ(mHandlers.at("Echo")->onCommand("<Echo>a &lt; <b/></Echo>", CommandArgs()),
            "<Echo>a &lt; <b/></Echo>");
}

TEST_F(SampleCommandsTest, AnswerAnotherDeviceOnAThreadOfTheirOwn) {
  CommandArgs args;
  args.messageId = GUID::createGUID();
  args.replyTo = "tcp://10.77.0.2:4448/";
  EXPECT_EQ(mHandlers.at("Echo")->onCommand("<Echo>a</Echo>", args), "");
  auto sent = mSent.get_future();
  ASSERT_EQ(sent.wait_for(std::chrono::seconds(20)), std::future_status::ready);
  EXPECT_EQ(sent.get(), "<Echo>a</Echo>");
}

TEST_F(SampleCommandsTest, GiveTheirNamesBack) {
  ASSERT_EQ(mHandles.size(), 4U);
  for (GUID const& handle : mHandles) {
    EXPECT_CALL(mCommands, unregisterCommandHandler(handle));
  }
  mSamples.reset();
}

TEST_F(SampleCommandsTest, ShowMessagePrintsItsText) {
  EXPECT_EQ(mHandlers.at("ShowMessage")
                ->onCommand("<ShowMessage>tea &amp; cake</ShowMessage>", CommandArgs()),
            "shown");
  EXPECT_EQ(mHandlers.at("ShowMessage")->onCommand("<ShowMessage>", CommandArgs()), "shown");
  EXPECT_THAT(mEvents.Take(), ElementsAre(StartsWith("command - "), "message - tea & cake",
                                          StartsWith("command - "), "message - "));
}

TEST_F(SampleCommandsTest, TimeIsFoundWithAndWithoutContent) {
  EXPECT_EQ(mHandlers.at("Time"), mHandlers.at("Time/"));
  EXPECT_THAT(mHandlers.at("Time")->onCommand("<Time></Time>", CommandArgs()),
              testing::MatchesRegex("[0-9-]{10}T[0-9:]{8}Z"));
  EXPECT_EQ(SampleCommands::TextOf(1'795'292'465), "2026-11-21T20:21:05Z");
}

}  // namespace
}  // namespace ZelvTv
