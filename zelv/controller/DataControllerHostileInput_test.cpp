// Texts that nobody well-behaved writes, as path and as value of every operation on the tree.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "zelv/controller/DataController.h"
#include "zelv/controller/testing/FakeProvider.h"
#include "zelv/controller/testing/RecordingCallback.h"
#include "zelv/controller/testing/RunningSystem.h"

namespace Zelv::Controller {
namespace {

using ::testing::AnyOf;
using Testing::FakeProvider;
using Testing::RecordingCallback;
using Testing::RunningSystem;

std::string repeated(std::string const& aText, int aTimes) {
  std::string text;
  for (; aTimes > 0; --aTimes) {
    text += aText;
  }
  return text;
}

std::vector<std::string> hostileTexts() {
  constexpr std::size_t cMegabyte = 1 << 20;
  std::vector<std::string> ends = {
      "",
      std::string("a\0b", 3),
      std::string(1, '\0'),
      "a[",
      "a]",
      "a[@ID='1",
      "a[@ID='1']]",
      "a['\"]",
      "a[b[c[d]]]",
      "a[\xff\xfe]",
      "\xc3\x28\xa0\xa1",
      "\xed\xa0\x80",
      "a/@",
      "a//",
      "@",
      "text()",
      "a\r\t\x01\x7f",
      "a\n",
      "%s%n%p%1000000d",
      "../../etc/passwd",
      repeated("a[", 2000),
      repeated("[", 2000) + repeated("]", 2000),
      repeated("/a", 20000),
      std::string(cMegabyte, 'a'),
      repeated("a[@ID='1']/", 100000),
  };
  std::vector<std::string> texts = {"/",
                                    "Zelv",
                                    "/Zelv",
                                    "/ZelvOld/a",
                                    "/Zelv[@DeviceId='x']",
                                    "/Zelv[@DeviceId='",
                                    "/Zelv[@DeviceId=",
                                    "/Zelv[@DeviceId=\"x\"]/",
                                    std::string("/Zelv[@DeviceId='\0']/a", 22)};
  for (std::string const& end : ends) {
    texts.push_back(end);
    texts.push_back("/Zelv/" + end);
    texts.push_back("/Zelv/Configuration/" + end);
  }
  return texts;
}

class DataControllerHostileInput : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(system.started);
    data = system.data();
    provider.set = [this](std::string const& aXPath, std::string const& aData, GUID const& aId) {
      data->notifyDataSubscribers(aXPath, aData, aId);
      return 0;
    };
    data->registerDataProvider("/Zelv/Test", &provider);
    data->subscribeData("/Zelv/Configuration", nullptr, &callback);
    data->subscribeData("/Zelv/Test", nullptr, &callback);
  }

  /// Only exceptions that the interface names may leave.
  static void attempt(std::function<void()> const& aOperation) {
    try {
      aOperation();
    } catch (std::exception const& error) {
      EXPECT_THAT(std::string(error.what()),
                  AnyOf("Invalid XPath.", "Cannot set data on remote XPath.",
                        "Cannot add data to remote XPath.",
                        "Cannot register data provider for remote XPath.",
                        "Duplicate subscription for XPath."));
    }
  }

  /// That the worker is alive and past all that was asked of it.
  void expectAnswer() {
    RecordingCallback last;
    data->requestData("/Zelv/Test/last", nullptr, &last);
    ASSERT_TRUE(last.waitFor(1));
  }

  RecordingCallback callback;
  FakeProvider provider;
  RunningSystem system;
  ICoreData* data = nullptr;
};

TEST_F(DataControllerHostileInput, AsAPathEndsInAnExceptionAStatusOrAValue) {
  for (std::string const& text : hostileTexts()) {
    attempt([&] { data->requestData(text, nullptr, &callback); });
    attempt([&] { data->setData(text, "v", &callback, true); });
    attempt([&] { data->addData(text, "v", &callback, false); });
    attempt([&] { data->unsubscribeData(data->subscribeData(text, nullptr, &callback)); });
    attempt([&] { data->registerDataProvider(text, &provider); });
    attempt([&] { data->unregisterDataProvider(text); });
    attempt([&] { data->notifyDataSubscribers(text, "v", GUID::createGUID()); });
  }
  expectAnswer();
}

TEST_F(DataControllerHostileInput, AsAPathOfSubscriptionsAndChangesAlikeEnds) {
  std::vector<GUID> ids;
  for (std::string const& text : hostileTexts()) {
    attempt([&] { ids.push_back(data->subscribeData(text, nullptr, &callback)); });
  }
  for (std::string const& text : hostileTexts()) {
    data->notifyDataSubscribers(text, "v", GUID::createGUID());
  }
  for (GUID const& id : ids) {
    data->unsubscribeData(id);
  }
  expectAnswer();
}

TEST_F(DataControllerHostileInput, AsAValueArrivesAsItIs) {
  GUID const id = data->subscribeData("/Zelv/Test/value", nullptr, &callback);
  expectAnswer();
  for (std::string const& text : hostileTexts()) {
    std::size_t const before = callback.heardOf(id).size();
    data->setData("/Zelv/Test/value", text, &callback, true);
    data->addData("/Zelv/Test/value", text, &callback, true);
    data->setData("/Zelv/Configuration/A/text()", text, &callback, true);
    data->setData("/Zelv/Configuration/A", text, &callback, true);
    data->notifyDataSubscriber(id, text);
    expectAnswer();
    auto const heard = callback.heardOf(id);
    ASSERT_EQ(heard.size(), before + 2);
    EXPECT_EQ(heard[before].value, text);
    EXPECT_EQ(heard[before + 1].value, text);
  }
}

TEST_F(DataControllerHostileInput, AsAPathForTheHelpersEnds) {
  DataController controller("me", nullptr);
  for (std::string const& text : hostileTexts()) {
    controller.isLocalXPath(text);
    EXPECT_LE(DataController::getDeviceIdFromXPath(text).size(), text.size());
    try {
      EXPECT_LE(DataController::convertToLocalXPath(text).size(), text.size());
    } catch (std::out_of_range const&) {
      EXPECT_TRUE(text.starts_with("/Zelv[@DeviceId=")) << text;
    }
  }
}

}  // namespace
}  // namespace Zelv::Controller
