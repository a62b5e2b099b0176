#include "apps/zelv-tv/SampleCommands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

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
          return GUID::createGUID();
        });
    mSamples.Register(mCommands);
  }

  NiceMock<CommandsMock> mCommands;
  std::map<std::string, Zelv::IBaseCommandHandler*> mHandlers;
  EventQueue mEvents;
  SampleCommands mSamples{mEvents};
};

TEST_F(SampleCommandsTest, EchoReturnsTheTextThatItGot) {
  EXPECT_EQ(mHandlers.at("Echo")->onCommand("<Echo>a &lt; <b/></Echo>", CommandArgs()),
            "<Echo>a &lt; <b/></Echo>");
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
