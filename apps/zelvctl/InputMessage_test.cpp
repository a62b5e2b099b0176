#include "apps/zelvctl/InputMessage.h"

#include <gtest/gtest.h>

namespace ZelvCtl {
namespace {

TEST(InputMessage, StandsAloneWithItsFourFields) {
  EXPECT_EQ((InputMessage{"Key", "<b>UP</b>", "me", "Tom & Ann"}.text()),
            "<OnInput><Type>Key</Type><Value><b>UP</b></Value><DeviceGuid>me</DeviceGuid>"
            "<UserNickname>Tom &amp; Ann</UserNickname></OnInput>");
}

TEST(InputMessage, HasAllFieldsAlsoWhenTheyAreEmpty) {
  EXPECT_EQ((InputMessage{"", "", "me", "n"}.text()),
            "<OnInput><Type></Type><Value></Value><DeviceGuid>me</DeviceGuid>"
            "<UserNickname>n</UserNickname></OnInput>");
}

}  // namespace
}  // namespace ZelvCtl
