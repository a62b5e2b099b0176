#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <exception>
#include <ostream>
#include <string>
#include <vector>

#include "zelv/core/Core.h"
#include "zelv/core/testing/Listener.h"
#include "zelv/core/testing/SmallSet.h"
#include "zelv/platform/fake/FakeClock.h"

namespace Zelv {
namespace {

using Platform::Fake::FakeClock;
using Testing::Listener;
using Testing::SmallSet;

std::string repeated(std::string const& aText, int aCount) {
  std::string text;
  for (int i = 0; i < aCount; ++i) {
    text += aText;
  }
  return text;
}

/// What nobody would write, as a path and as a value.
std::vector<std::string> hostileTexts() {
  std::string everyByte;
  for (int byte = 0; byte < 256; ++byte) {
    everyByte += static_cast<char>(byte);
  }
  return {"",
          "/",
          "//",
          "/Zelv",
          "/Zelv/",
          std::string("a\0b", 3),
          std::string(1, '\0'),
          std::string("/Zelv/Applications/\0/text()", 27),
          everyByte,
          "[",
          "]",
          "][",
          "a[",
          "a]",
          "*[",
          "*[]",
          "*[[[[",
          "*]]]]",
          "a[1",
          "a[@x='",
          "a[@x=\"'",
          "a[@x='it's']",
          "'",
          "\"",
          "'\"",
          "a[text()='\"]",
          "text()",
          "/text()/text()",
          "@",
          "@@",
          "a/@",
          "\xff\xfe",
          "\xc3(",
          "\xe2\x82",
          "\xed\xa0\x80",
          "a\n",
          "\r\n\t",
          "%s%s%n%d",
          "&#0;&#x110000;&unknown;&",
          "<",
          "</x>",
          "<x></x></x>",
          "<x",
          "<x a='1' a='2'>",
          "<!--",
          "<![CDATA[",
          "<?xml version='\"'?>",
          "]]>",
          "count(//*[count(//*[count(//*)>0])>0])",
          "../../..",
          "//*",
          "descendant-or-self::*"};
}

/// The same, as large as nobody expects.
std::vector<std::string> largeTexts() {
  return {std::string(1 << 20, 'a'),      std::string(1 << 20, '/'),
          std::string(1 << 20, '['),      std::string(1 << 20, ']'),
          std::string(1 << 20, '\''),     std::string(1 << 20, '<'),
          std::string(1 << 20, '\0'),     std::string(1 << 20, '\xff'),
          repeated("a[@x='1']/", 100000), repeated("&amp;", 200000) + "lt;",
          repeated("<a>", 100000),        repeated("<a>", 100000) + repeated("</a>", 100000)};
}

std::vector<std::string> allTexts() {
  std::vector<std::string> texts = hostileTexts();
  for (std::string const& text : largeTexts()) {
    texts.push_back(text);
  }
  return texts;
}

/// The texts where paths are looked at in different ways.
std::vector<std::string> hostilePaths() {
  std::vector<std::string> paths;
  for (std::string const& text : hostileTexts()) {
    for (char const* start :
         {"", "/Zelv/", "/Zelv/Applications", "/Zelv/Applications/", "/Zelv/Applications/*[@x='",
          "/Zelv[@DeviceId='", "/Zelv[@DeviceId=\""}) {
      paths.push_back(start + text);
    }
    paths.push_back("/Zelv/Applications/ActiveApplication[@x='" + text + "']/Name/text()");
  }
  for (std::string const& text : largeTexts()) {
    paths.push_back(text);
    paths.push_back("/Zelv/Applications/" + text);
  }
  return paths;
}

/// The beginning of a text, fit for the message of a failed test.
std::string shown(std::string const& aText) {
  return ::testing::PrintToString(aText.substr(0, 80)) + " of " + std::to_string(aText.size());
}

struct Operation {
  char const* name;
  void (*call)(Core& aCore, std::string const& aText, Listener& aListener);
};

void PrintTo(Operation const& aOperation, std::ostream* aStream) {
  *aStream << aOperation.name;
}

class CoreHostileInput : public ::testing::TestWithParam<Operation> {
 protected:
  void SetUp() override { ASSERT_NE(SmallSet::start(), nullptr); }

  void TearDown() override { InterfaceFactory::terminate(); }

  /// Makes the call; what it throws must say something.
  void call(std::string const& aText) {
    try {
      GetParam().call(*Core::requestCore(), aText, mListener);
    } catch (std::exception const& exception) {
      EXPECT_STRNE(exception.what(), "") << shown(aText);
    }
  }

  /// Waits until everything asked so far is done. @return whether the tree answers.
  bool answers() {
    GUID const id = Core::requestCore()->requestData(SmallSet::cDiscoveryPath, nullptr, &mListener);
    return mListener.waitFor(id) && mListener.of(id)[0].value == "false";
  }

  void callWithAll(std::vector<std::string> const& aTexts) {
    for (std::string const& text : aTexts) {
      call(text);
      ASSERT_TRUE(answers()) << shown(text);
      mSet.log.clear();
    }
    InterfaceFactory::terminate();
    EXPECT_NE(SmallSet::start(), nullptr) << mSet.log.dump();
    EXPECT_TRUE(answers());
  }

  SmallSet mSet;
  Listener mListener;
};

class CoreHostilePath : public CoreHostileInput {};
class CoreHostileText : public CoreHostileInput {};

TEST_P(CoreHostilePath, LeavesTheTreeInService) {
  callWithAll(hostilePaths());
}

TEST_P(CoreHostileText, LeavesTheTreeInService) {
  callWithAll(allTexts());
}

GUID setAt(Core& aCore, char const* aXPath, std::string const& aValue, Listener& aListener) {
  return aCore.setData(aXPath, aValue, &aListener, true);
}

INSTANTIATE_TEST_SUITE_P(
    Operations, CoreHostilePath,
    ::testing::Values(Operation{"SetData",
                                [](Core& aCore, std::string const& aText, Listener& aListener) {
                                  aCore.setData(aText, "<x/>", &aListener, true);
                                }},
                      Operation{"SetDataWithheld",
                                [](Core& aCore, std::string const& aText, Listener& aListener) {
                                  aCore.setData(aText, aText, &aListener, false);
                                }},
                      Operation{"RequestData",
                                [](Core& aCore, std::string const& aText, Listener& aListener) {
                                  aCore.requestData(aText, nullptr, &aListener);
                                }},
                      Operation{"SubscribeData",
                                [](Core& aCore, std::string const& aText, Listener& aListener) {
                                  GUID const id = aCore.subscribeData(aText, nullptr, &aListener);
                                  setAt(aCore, SmallSet::cNamePath, "changed", aListener);
                                  aCore.requestData(SmallSet::cNamePath, nullptr, &aListener);
                                  aCore.unsubscribeData(id);
                                }},
                      Operation{"Providers",
                                [](Core& aCore, std::string const& aText, Listener&) {
                                  aCore.unregisterDataProvider(aText + "!");
                                  aCore.registerDataProvider(aText + "!", nullptr);
                                  aCore.unregisterDataProvider(aText + "!");
                                }},
                      Operation{"NotifyDataSubscribers",
                                [](Core& aCore, std::string const& aText, Listener& aListener) {
                                  GUID const id =
                                      aCore.subscribeData(SmallSet::cNamePath, nullptr, &aListener);
                                  aCore.notifyDataSubscribers(aText, aText, GUID::createGUID());
                                  aCore.notifyDataSubscribers(SmallSet::cNamePath, aText,
                                                              GUID::createGUID());
                                  aCore.notifyDataSubscriber(id, aText);
                                  aCore.notifyDataSubscriber(GUID::createGUID(), aText);
                                  aCore.unsubscribeData(id);
                                  aCore.unsubscribeData(id);
                                }}),
    [](auto const& aInfo) { return std::string(aInfo.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Operations, CoreHostileText,
    ::testing::Values(Operation{"SetText",
                                [](Core& aCore, std::string const& aText, Listener& aListener) {
                                  setAt(aCore, SmallSet::cNamePath, aText, aListener);
                                }},
                      Operation{"SetElement",
                                [](Core& aCore, std::string const& aText, Listener& aListener) {
                                  setAt(aCore, "/Zelv/Applications/ActiveApplication/Name", aText,
                                        aListener);
                                }},
                      Operation{"SetBranch",
                                [](Core& aCore, std::string const& aText, Listener& aListener) {
                                  setAt(aCore, "/Zelv/Applications", aText, aListener);
                                }},
                      Operation{"AddData",
                                [](Core& aCore, std::string const& aText, Listener& aListener) {
                                  aCore.addData(aText, aText, &aListener, true);
                                }},
                      Operation{"Timers",
                                [](Core& aCore, std::string const& aText, Listener& aListener) {
                                  GUID const id = aCore.createTimer(0, 0, aText, &aListener);
                                  FakeClock::Advance(2);
                                  aCore.resetTimer(id, 4294967295U, -2147483647);
                                  aCore.destroyTimer(id, &aListener);
                                  aCore.destroyTimer(id, &aListener);
                                  aCore.resetTimer(id, 1, 1);
                                }},
                      Operation{"Components",
                                [](Core& aCore, std::string const& aText, Listener&) {
                                  aCore.unregisterComponent(aText);
                                  EXPECT_EQ(aCore.getComponent(aText), nullptr);
                                  EXPECT_EQ(aCore.setLifetimeState(LIFETIME_START, aText, nullptr),
                                            GUID::nullGUID);
                                  aCore.registerComponent(aText, nullptr);
                                }},
                      Operation{"IdleOperations",
                                [](Core& aCore, std::string const& aText, Listener&) {
                                  aCore.unsubscribeForAllData(aText);
                                  aCore.updateSubscriberStatus(GUID::nullGUID, aText);
                                  aCore.onData(aText, aText, nullptr, GUID::nullGUID);
                                  aCore.setName(aText);
                                  EXPECT_EQ(aCore.getName(), aText);
                                }}),
    [](auto const& aInfo) { return std::string(aInfo.param.name); });

/// Each accepted read is answered, and each accepted subscription gets its first delivery.
TEST(CoreHostileRead, IsAnsweredOnceOrRefused) {
  SmallSet set;
  Core* const core = SmallSet::start();
  ASSERT_NE(core, nullptr);
  Listener listener;
  for (std::string const& text : allTexts()) {
    std::string const path = "/Zelv/Applications/" + text;
    bool const refused = path.find('\n') != std::string::npos;
    try {
      GUID const id = core->requestData(path, nullptr, &listener);
      EXPECT_FALSE(refused) << shown(text);
      EXPECT_TRUE(listener.waitFor(id)) << shown(text);
    } catch (std::exception const& exception) {
      EXPECT_TRUE(refused) << shown(text);
      EXPECT_STREQ(exception.what(), "Invalid XPath.");
    }
    set.log.clear();
  }
  InterfaceFactory::terminate();
}

/// No value that is accepted makes the file unfit for the next start.
TEST(CoreHostileValue, LeavesAFileThatLoadsAgain) {
  for (char const* path : {SmallSet::cNamePath, "/Zelv/Applications/ActiveApplication/Name"}) {
    for (std::string const& text : allTexts()) {
      SmallSet set;
      Listener listener;
      ASSERT_NE(SmallSet::start(), nullptr);
      setAt(*Core::requestCore(), path, text, listener);
      GUID const last =
          Core::requestCore()->requestData(SmallSet::cDiscoveryPath, nullptr, &listener);
      ASSERT_TRUE(listener.waitFor(last));
      InterfaceFactory::terminate();
      set.log.clear();
      ASSERT_NE(SmallSet::start(), nullptr) << shown(text);
      EXPECT_FALSE(set.log.has(PCRealDebug::Notable,
                               "ZelvFileUtil::checkIsFileAvailable: File successfully restored!"))
          << path << " " << shown(text);
      InterfaceFactory::terminate();
    }
  }
}

}  // namespace
}  // namespace Zelv
