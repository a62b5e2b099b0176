#include "apps/zelv-tv/SampleCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace ZelvTv {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Zelv::CommandArgs;
using Zelv::GUID;

class SampleCommandTest : public testing::Test {
 protected:
  static CommandArgs fromPhone() {
    CommandArgs args;
    args.commandId = GUID::createGUID();
    args.messageId = GUID("6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10");
    args.senderId = "a phone";
    args.replyTo = "tcp://10.77.0.2:4448/";
    return args;
  }

  EventQueue mEvents;
  std::vector<std::string> mSent;
  SampleCommand mCommand{
      mEvents,
      [this](std::string const& aValue, CommandArgs const& aArgs) {
        mSent.push_back(aArgs.replyTo + " " + aArgs.messageId.toString() + " " + aValue);
      },
      [](std::string const& aCommand, CommandArgs const&) { return "got " + aCommand; }};
};

TEST_F(SampleCommandTest, AnswersItsOwnSetByTheReturnValue) {
  CommandArgs args;
  args.commandId = GUID::createGUID();
  EXPECT_EQ(mCommand.onCommand("<A>\n</A>", args), "got <A>\n</A>");
  EXPECT_THAT(mSent, IsEmpty());
  EXPECT_THAT(mEvents.Take(),
              ElementsAre("command - 00000000-0000-0000-0000-000000000000 <A>\\n</A>"));
}

TEST_F(SampleCommandTest, AnswersAnotherDeviceByAMessageAlone) {
  EXPECT_EQ(mCommand.onCommand("<A></A>", fromPhone()), "");
  EXPECT_THAT(mSent, ElementsAre("tcp://10.77.0.2:4448/ 6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10 "
                                 "got <A></A>"));
  EXPECT_THAT(mEvents.Take(),
              ElementsAre("command a\\x20phone 6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10 <A></A>"));
}

TEST_F(SampleCommandTest, AnswersNobodyWhoGaveNoAddress) {
  CommandArgs args = fromPhone();
  args.replyTo.clear();
  EXPECT_EQ(mCommand.onCommand("<A></A>", args), "");
  EXPECT_THAT(mSent, IsEmpty());
}

}  // namespace
}  // namespace ZelvTv
