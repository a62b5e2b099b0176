#include "apps/zelvctl/AssetPrinter.h"

#include <gtest/gtest.h>

#include <sstream>

namespace ZelvCtl {
namespace {

Asset const kAsset{"TVImage", "A2CE", "pictures/tv 1.png"};
Asset const kHostile{"a b", "", "\x1b[2J\n"};

TEST(AssetPrinter, PrintsALineForPeople) {
  std::ostringstream out;
  AssetPrinter printer(out, false);
  printer.description(kAsset);
  printer.file(kAsset, "out/tv 1.png", 4294967296, "image/png");
  EXPECT_EQ(out.str(), "TVImage A2CE pictures/tv 1.png\nTVImage A2CE 4294967296 out/tv 1.png\n");
}

TEST(AssetPrinter, LetsNothingSteerTheTerminalOrPassForAnotherField) {
  std::ostringstream out;
  AssetPrinter printer(out, false);
  printer.description(kHostile);
  EXPECT_EQ(out.str(), "a\\x20b - \\x1b[2J\\n\n");
}

TEST(AssetPrinter, PrintsAnObjectALineForPrograms) {
  std::ostringstream out;
  AssetPrinter printer(out, true);
  printer.description(kHostile);
  printer.file(kAsset, "out/tv 1.png", 5, "image/png");
  EXPECT_EQ(out.str(),
            "{\"asset\":\"a b\",\"id\":\"\",\"src\":\"\\u001b[2J\\n\"}\n"
            "{\"asset\":\"TVImage\",\"file\":\"out/tv 1.png\",\"id\":\"A2CE\",\"size\":5,"
            "\"src\":\"pictures/tv 1.png\",\"type\":\"image/png\"}\n");
}

TEST(AssetPrinter, NoticesThatNobodyReads) {
  std::ostringstream out;
  AssetPrinter printer(out, false);
  EXPECT_FALSE(printer.isBroken());
  out.setstate(std::ios::badbit);
  printer.description(kAsset);
  EXPECT_TRUE(printer.isBroken());
}

}  // namespace
}  // namespace ZelvCtl
