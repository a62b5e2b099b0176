#include "zelv/platform/TCTv.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

TEST(TCTv, HasNoProductCodeAtFirst) {
  TCTv tv;
  char buffer[TCTv::ProductCodeSize];
  std::memset(buffer, 'x', sizeof buffer);
  EXPECT_FALSE(tv.GetProductCode(buffer, false));
  EXPECT_EQ('x', buffer[0]);
  EXPECT_EQ('x', buffer[sizeof buffer - 1]);
}

TEST(TCTv, GivesTheProductCodeThatTheHostHasSet) {
  TCTv tv;
  char buffer[TCTv::ProductCodeSize];
  tv.SetProductCode("UE40");
  EXPECT_TRUE(tv.GetProductCode(buffer, false));
  EXPECT_STREQ("UE40", buffer);
  tv.SetProductCode("B");
  EXPECT_TRUE(tv.GetProductCode(buffer, true));
  EXPECT_STREQ("B", buffer);
  tv.SetProductCode("");
  EXPECT_FALSE(tv.GetProductCode(buffer, false));
}

TEST(TCTv, CutsAProductCodeThatIsTooLong) {
  TCTv tv;
  char buffer[TCTv::ProductCodeSize];
  tv.SetProductCode(std::string(127, 'a').c_str());
  EXPECT_TRUE(tv.GetProductCode(buffer, false));
  EXPECT_EQ(std::string(127, 'a'), buffer);
  tv.SetProductCode(std::string(500, 'b').c_str());
  EXPECT_TRUE(tv.GetProductCode(buffer, false));
  EXPECT_EQ(std::string(127, 'b'), buffer);
}

TEST(TCTv, IsOneInTheProcess) {
  char buffer[TCTv::ProductCodeSize];
  g_AppTV.SetProductCode("UE40");
  EXPECT_TRUE(g_AppTV.GetProductCode(buffer, false));
  EXPECT_STREQ("UE40", buffer);
  g_AppTV.SetProductCode("");
}

}  // namespace
