#include "apps/zelvctl/CommandVerb.h"

#include <gmock/gmock.h>

#include "apps/zelvctl/CommandMessages.h"
#include "apps/zelvctl/testing/VerbTest.h"

namespace ZelvCtl {
namespace {

using testing::HasSubstr;

class CommandVerbTest : public VerbTest {
 protected:
  Options commandFor(FakeSet& aSet) {
    Options options = optionsFor(aSet);
    options.command = "<Echo>hi</Echo>";
    return options;
  }

  static bool answer(std::string const& aCommand, std::string const& aValue) {
    return FakeSet::reply(
        aCommand, "ReplyTo",
        CommandMessages(FakeSet::Id).answer(FakeSet::part(aCommand, "MessageID"), aValue));
  }
};

TEST_F(CommandVerbTest, PrintsWhatTheCommandReturned) {
  FakeSet set([](std::string const& aCommand) { answer(aCommand, "<Echo>hi</Echo>"); });
  EXPECT_EQ(run<CommandVerb>(commandFor(set)), "");
  EXPECT_EQ(mOut.str(), "<Echo>hi</Echo>\n");
  std::vector<std::string> const messages = set.messages(1);
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_THAT(messages[0], HasSubstr("<Body><Echo>hi</Echo></Body>"));
}

TEST_F(CommandVerbTest, WaitsForAsManyAnswersAsWereAskedFor) {
  FakeSet set([](std::string const& aCommand) {
    answer(aCommand, "1");
    answer(aCommand, "2");
    answer(aCommand, "3");
  });
  Options options = commandFor(set);
  options.returns = 2;
  EXPECT_EQ(run<CommandVerb>(options), "");
  EXPECT_EQ(mOut.str(), "1\n2\n");
}

TEST_F(CommandVerbTest, DropsCopiesAndAnswersToOthers) {
  FakeSet set([](std::string const& aCommand) {
    std::string const text =
        CommandMessages(FakeSet::Id).answer(FakeSet::part(aCommand, "MessageID"), "1");
    FakeSet::reply(aCommand, "ReplyTo", "no XML");
    FakeSet::reply(aCommand, "ReplyTo", CommandMessages("x").answer(FakeSet::Id, "hostile"));
    FakeSet::reply(aCommand, "ReplyTo", CommandMessages("x").command("id", "", "<Hostile/>"));
    FakeSet::reply(aCommand, "ReplyTo", text);
    FakeSet::reply(aCommand, "ReplyTo", text);
    answer(aCommand, "2");
  });
  Options options = commandFor(set);
  options.returns = 2;
  EXPECT_EQ(run<CommandVerb>(options), "");
  EXPECT_EQ(mOut.str(), "1\n2\n");
}

TEST_F(CommandVerbTest, ExpectsNothingWhenNoneIsWanted) {
  FakeSet set;
  Options options = commandFor(set);
  options.noWait = true;
  EXPECT_EQ(run<CommandVerb>(options), "");
  EXPECT_EQ(mOut.str(), "");
}

TEST_F(CommandVerbTest, SaysInOneLineThatNothingWasReturned) {
  FakeSet set;
  Options options = commandFor(set);
  options.device = FakeSet::Id;
  options.timeout = 2;
  EXPECT_EQ(run<CommandVerb>(options),
            "'Kitchen' has taken the command and returned nothing within 2 s");
}

}  // namespace
}  // namespace ZelvCtl
