#include "zelv/controller/UserInput.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/Fakes.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv::Controller {
namespace {

using Platform::Fake::FakeClock;
using Platform::Fake::LogCapture;
using Platform::Fake::Logged;

char const cFailure[] = "UserInput::UserInput: Error in parsing user inputs.";

class UserInputTest : public ::testing::Test {
 protected:
  UserInputTest() { Platform::Fake::ResetFakes(); }
  ~UserInputTest() override { Platform::Fake::ResetFakes(); }

  static std::string document(std::string const& aContent) {
    return "<OnInput>" + aContent + "</OnInput>";
  }

  /// A whole document with this value.
  static UserInput withValue(std::string const& aValue) {
    return UserInput(document("<Type>Key</Type><Value>" + aValue +
                              "</Value><DeviceGuid>d</DeviceGuid><UserNickname>u</UserNickname>"));
  }

  void expectEmpty(UserInput const& aInput) const {
    EXPECT_EQ(aInput.getType(), "");
    EXPECT_EQ(aInput.getValue(), "");
    EXPECT_EQ(aInput.getDevice(), "");
    EXPECT_EQ(aInput.getUser(), "");
    EXPECT_EQ(aInput.getId(), GUID::nullGUID);
    EXPECT_EQ(aInput.getTime(), 0U);
    EXPECT_THAT(log, Logged(PCRealDebug::Error, cFailure));
  }

  LogCapture log;
};

TEST_F(UserInputTest, TakesFourTextsAsTheyAre) {
  UserInput const input("Key", "<a>", "device", "Tom & Anna");
  EXPECT_EQ(input.getType(), "Key");
  EXPECT_EQ(input.getValue(), "<a>");
  EXPECT_EQ(input.getDevice(), "device");
  EXPECT_EQ(input.getUser(), "Tom & Anna");
  EXPECT_NE(input.getId(), GUID::nullGUID);
  EXPECT_EQ(input.getTime(), FakeClock::cStartWall);
}

TEST_F(UserInputTest, ReadsTheFourFieldsOfADocument) {
  UserInput const input(
      document("<Type>Key</Type><Value>Left</Value>"
               "<DeviceGuid>6ba7b810-9dad-11d1-80b4-00c04fd430c8</DeviceGuid>"
               "<UserNickname>Anna</UserNickname>"));
  EXPECT_EQ(input.getType(), "Key");
  EXPECT_EQ(input.getValue(), "Left");
  EXPECT_EQ(input.getDevice(), "6ba7b810-9dad-11d1-80b4-00c04fd430c8");
  EXPECT_EQ(input.getUser(), "Anna");
  EXPECT_NE(input.getId(), GUID::nullGUID);
  EXPECT_EQ(input.getTime(), FakeClock::cStartWall);
  EXPECT_EQ(log.count(PCRealDebug::Error), 0) << log.dump();
  EXPECT_THAT(log, Logged(PCRealDebug::Detail,
                          "UserInput::UserInput: type='Key', value='Left', "
                          "device='6ba7b810-9dad-11d1-80b4-00c04fd430c8', user='Anna'"));
}

TEST_F(UserInputTest, GivesEachEventAnIdOfItsOwn) {
  EXPECT_NE(withValue("x").getId(), withValue("x").getId());
  EXPECT_NE(UserInput("", "", "", "").getId(), UserInput("", "", "", "").getId());
}

TEST_F(UserInputTest, TellsTheTimeBeyond2038) {
  FakeClock::SetWall(INT64_C(2147483648));
  EXPECT_EQ(withValue("x").getTime(), 2147483648U);
}

TEST_F(UserInputTest, ReadsFieldsInAnyOrderAndIgnoresOthers) {
  UserInput const input(
      document("<More/><UserNickname>u</UserNickname>\n<Value>v</Value><Type>t</Type>"
               "<DeviceGuid>d</DeviceGuid>") +
      "\n");
  EXPECT_EQ(input.getType(), "t");
  EXPECT_EQ(input.getValue(), "v");
  EXPECT_EQ(input.getDevice(), "d");
  EXPECT_EQ(input.getUser(), "u");
}

TEST_F(UserInputTest, GivesAValueOfMarkupAsXmlText) {
  EXPECT_EQ(withValue("<Point x=\"1\"><Y>2</Y></Point>").getValue(),
            "<Point x='1'><Y>2</Y></Point>");
}

TEST_F(UserInputTest, JoinsTheNodesOfAValue) {
  EXPECT_EQ(withValue("<A>1</A><B/>").getValue(), "<A>1</A>&#x13;<B/>");
  EXPECT_EQ(withValue("text<B/>").getValue(), "text&#x13;<B/>");
}

TEST_F(UserInputTest, ResolvesEntitiesOfAValue) {
  EXPECT_EQ(withValue("1 &lt; 2 &amp; &quot;3&quot;").getValue(), "1 < 2 & \"3\"");
}

TEST_F(UserInputTest, TakesAnEmptyFieldForAnEmptyText) {
  UserInput const input(document("<Type/><Value/><DeviceGuid></DeviceGuid><UserNickname/>"));
  EXPECT_EQ(input.getType(), "");
  EXPECT_EQ(input.getValue(), "");
  EXPECT_EQ(input.getUser(), "");
  EXPECT_NE(input.getId(), GUID::nullGUID);
  EXPECT_EQ(log.count(PCRealDebug::Error), 0) << log.dump();
}

// The result of reading the last field counts for all.

TEST_F(UserInputTest, PassesWithoutTypeValueOrDevice) {
  UserInput const input(document("<UserNickname>u</UserNickname>"));
  EXPECT_EQ(input.getType(), "");
  EXPECT_EQ(input.getValue(), "");
  EXPECT_EQ(input.getDevice(), "");
  EXPECT_EQ(input.getUser(), "u");
  EXPECT_NE(input.getId(), GUID::nullGUID);
  EXPECT_EQ(log.count(PCRealDebug::Error), 0) << log.dump();
}

TEST_F(UserInputTest, IsEmptyWithoutAUser) {
  expectEmpty(
      UserInput(document("<Type>Key</Type><Value>Left</Value><DeviceGuid>device</DeviceGuid>")));
  EXPECT_EQ(log.texts(PCRealDebug::Error), std::vector<std::string>{cFailure});
}

class NoInput : public UserInputTest, public ::testing::WithParamInterface<char const*> {};

TEST_P(NoInput, GivesAnEmptyEvent) {
  expectEmpty(UserInput(std::string(GetParam())));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, NoInput,
    ::testing::Values("", "\n", "Key Left", "<", "</OnInput>", "<!-- OnInput -->",
                      "<Other><UserNickname>u</UserNickname></Other>",
                      "<Envelope><Body><OnInput><UserNickname>u</UserNickname></OnInput></Body>"
                      "</Envelope>",
                      "<OnInput><User><UserNickname>u</UserNickname></User></OnInput>"));

}  // namespace
}  // namespace Zelv::Controller
