#include "apps/zelvctl/Printer.h"

#include <gtest/gtest.h>

#include <sstream>

namespace ZelvCtl {
namespace {

Device const television{"6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10", "TV", "Kitchen", "M1", "10.77.0.1"};
Device const phone{"p", "MOBILE", "Tom", "", ""};

class PrinterTest : public testing::Test {
 protected:
  std::ostringstream mOut;
  Printer mText{mOut, false};
  Printer mJson{mOut, true};
};

TEST_F(PrinterTest, AlignsDevicesForPeople) {
  mText.list({television, phone});
  EXPECT_EQ(mOut.str(),
            "TV      6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10  10.77.0.1        Kitchen\n"
            "MOBILE  p                                     -                Tom\n");
}

TEST_F(PrinterTest, MarksArrivalsAndDepartures) {
  mText.change(true, phone);
  mText.change(false, phone);
  EXPECT_EQ(mOut.str(),
            "+ MOBILE  p                                     -                Tom\n"
            "- MOBILE  p                                     -                Tom\n");
}

TEST_F(PrinterTest, GivesProgramsOneArray) {
  mJson.list({phone});
  mJson.list({});
  EXPECT_EQ(mOut.str(), R"([{"address":"","id":"p","model":"","name":"Tom","type":"MOBILE"}])"
                        "\n[]\n");
}

TEST_F(PrinterTest, GivesProgramsOneEventALine) {
  mJson.change(true, television);
  mJson.change(false, phone);
  EXPECT_EQ(
      mOut.str(),
      R"({"address":"10.77.0.1","event":"arrived","id":"6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10",)"
      R"("model":"M1","name":"Kitchen","type":"TV"})"
      "\n"
      R"({"address":"","event":"left","id":"p","model":"","name":"Tom","type":"MOBILE"})"
      "\n");
}

TEST_F(PrinterTest, LetsNoStrangerBreakTheLineOrSteerTheTerminal) {
  mText.change(true, {"p", "MOBILE", "a\nb\x1b[2J\x7f\xc2\x9b\xc3\xa4", "", ""});
  EXPECT_EQ(mOut.str(),
            "+ MOBILE  p                                     -                a?b?[2J??\xc3\xa4\n");
}

TEST_F(PrinterTest, ShowsATextThatIsNoUtf8WithMarks) {
  mJson.change(true, {"p", "MOBILE", "a\xff", "", ""});
  EXPECT_NE(mOut.str().find("\"name\":\"a\xef\xbf\xbd\""), std::string::npos) << mOut.str();
}

TEST_F(PrinterTest, KnowsWhenNobodyReads) {
  mText.change(true, phone);
  EXPECT_FALSE(mText.isBroken());
  mOut.setstate(std::ios::badbit);
  mText.change(true, phone);
  EXPECT_TRUE(mText.isBroken());
}

}  // namespace
}  // namespace ZelvCtl
