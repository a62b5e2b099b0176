#include "apps/zelvctl/AnswerPrinter.h"

#include <gtest/gtest.h>

#include <sstream>

namespace ZelvCtl {
namespace {

class AnswerPrinterTest : public testing::Test {
 protected:
  std::string printed() {
    std::string text = mOut.str();
    mOut.str("");
    return text;
  }

  std::ostringstream mOut;
  AnswerPrinter mText{mOut, false};
  AnswerPrinter mJson{mOut, true};
};

TEST_F(AnswerPrinterTest, ShowsAValueAsItIs) {
  mText.value("/Zelv/A", "<a>\n</a>");
  EXPECT_EQ(printed(), "<a>\n</a>\n");
  mJson.value("/Zelv/A", "<a>\n\"</a>");
  EXPECT_EQ(printed(), R"({"path":"/Zelv/A","value":"<a>\n\"</a>"})"
                       "\n");
}

TEST_F(AnswerPrinterTest, ShowsEachChangeOnALineOfItsOwn) {
  mText.change("/Zelv/A", "one\ntwo\x1b");
  EXPECT_EQ(printed(), "one\\ntwo\\x1b\n");
  mJson.change("/Zelv/A", "one\ntwo");
  EXPECT_EQ(printed(), R"({"path":"/Zelv/A","value":"one\ntwo"})"
                       "\n");
}

TEST_F(AnswerPrinterTest, ShowsProgramsAloneThatSomethingHasGoneOut) {
  mText.taken("/Zelv/A");
  mText.sent(3);
  EXPECT_EQ(printed(), "");
  mJson.taken("/Zelv/A");
  mJson.sent(3);
  EXPECT_EQ(printed(), "{\"acknowledged\":true,\"path\":\"/Zelv/A\"}\n{\"sent\":3}\n");
}

TEST_F(AnswerPrinterTest, ShowsWhatACommandReturned) {
  mText.answer("tv", "<a/>");
  EXPECT_EQ(printed(), "<a/>\n");
  mJson.answer("tv", "<a/>\xff");
  EXPECT_EQ(printed(), "{\"sender\":\"tv\",\"value\":\"<a/>\xef\xbf\xbd\"}\n");
}

TEST_F(AnswerPrinterTest, ShowsEachCommandOnOneLine) {
  mText.ready("me", "tcp://10.77.0.3:4448/");
  mText.command("t v\n", "id", "<Echo>\n</Echo>");
  mText.command("", "id", "x");
  EXPECT_EQ(printed(),
            "ready me tcp://10.77.0.3:4448/\ncommand t\\x20v\\n id <Echo>\\n</Echo>\n"
            "command - id x\n");
  mJson.ready("me", "tcp://10.77.0.3:4448/");
  mJson.command("tv", "id", "<Echo/>");
  EXPECT_EQ(printed(),
            "{\"event\":\"ready\",\"id\":\"me\",\"url\":\"tcp://10.77.0.3:4448/\"}\n"
            "{\"event\":\"command\",\"message\":\"id\",\"sender\":\"tv\",\"text\":\"<Echo/>\"}\n");
}

TEST_F(AnswerPrinterTest, NotesThatNobodyReads) {
  EXPECT_FALSE(mText.isBroken());
  mOut.setstate(std::ios::badbit);
  mText.value("/Zelv/A", "x");
  EXPECT_TRUE(mText.isBroken());
}

}  // namespace
}  // namespace ZelvCtl
