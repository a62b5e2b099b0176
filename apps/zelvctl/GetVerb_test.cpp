#include "apps/zelvctl/GetVerb.h"

#include <gmock/gmock.h>

#include "apps/zelvctl/testing/VerbTest.h"

namespace ZelvCtl {
namespace {

using testing::HasSubstr;

class GetVerbTest : public VerbTest {};

void answer(std::string const& aRequest, std::string const& aValue) {
  FakeSet::reply(aRequest, "NotifyTo",
                 FakeSet::onData(FakeSet::part(aRequest, "TransactionId"), aValue));
}

TEST_F(GetVerbTest, PrintsTheValueOfADeviceGivenByName) {
  FakeSet set([](std::string const& aRequest) { answer(aRequest, "<a>1</a>"); });
  EXPECT_EQ(run<GetVerb>(optionsFor(set)), "");
  EXPECT_EQ(mOut.str(), "<a>1</a>\n");
  std::vector<std::string> const messages = set.messages(1);
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_THAT(messages[0], HasSubstr("<XPath>/Zelv/A/text()</XPath>"));
}

TEST_F(GetVerbTest, PrintsJsonForPrograms) {
  FakeSet set([](std::string const& aRequest) { answer(aRequest, "x"); });
  Options options = optionsFor(set);
  options.device = FakeSet::Id;
  options.json = true;
  EXPECT_EQ(run<GetVerb>(options), "");
  EXPECT_EQ(mOut.str(), "{\"path\":\"/Zelv/A/text()\",\"value\":\"x\"}\n");
}

TEST_F(GetVerbTest, DropsWhatDoesNotAnswerItsRequest) {
  FakeSet set([](std::string const& aRequest) {
    FakeSet::reply(aRequest, "NotifyTo", "no XML");
    FakeSet::reply(aRequest, "NotifyTo", FakeSet::onData("no ID", "hostile"));
    FakeSet::reply(aRequest, "NotifyTo", FakeSet::onData(FakeSet::Id, "hostile"));
    answer(aRequest, "right");
    answer(aRequest, "late");
  });
  EXPECT_EQ(run<GetVerb>(optionsFor(set)), "");
  EXPECT_EQ(mOut.str(), "right\n");
}

TEST_F(GetVerbTest, SaysInOneLineThatNoValueCame) {
  FakeSet set;
  Options options = optionsFor(set);
  options.device = FakeSet::Id;
  options.timeout = 2;
  EXPECT_EQ(run<GetVerb>(options), "'Kitchen' gave no value of /Zelv/A/text() within 2 s");
  EXPECT_EQ(mOut.str(), "");
}

TEST_F(GetVerbTest, EndsAtTheSignal) {
  FakeSet set([this](std::string const&) { mStop.ring(); });
  EXPECT_EQ(run<GetVerb>(optionsFor(set)), "interrupted");
}

TEST_F(GetVerbTest, SaysThatTheDeviceIsNotThere) {
  FakeSet set;
  Options options = optionsFor(set);
  options.device = "Cellar";
  options.timeout = 2;
  EXPECT_EQ(run<GetVerb>(options),
            "no device has the name or ID 'Cellar'; `zelvctl devices` lists those that are there");
}

TEST_F(GetVerbTest, AsksAnAddressWithoutLookingForIt) {
  Options options;
  options.device = "127.0.0.2";  // nobody serves there
  options.path = "/Zelv/A/text()";
  options.timeout = 5;
  EXPECT_EQ(run<GetVerb>(options), "'127.0.0.2' does not take messages at tcp://127.0.0.2:4446/");
}

}  // namespace
}  // namespace ZelvCtl
