#include "apps/zelvctl/PeerUrl.h"

#include <gtest/gtest.h>

namespace ZelvCtl {
namespace {

TEST(PeerUrl, LeadsToOneHost) {
  auto const url = PeerUrl::read("tcp://10.77.0.1:4448/", "tcp");
  ASSERT_TRUE(url);
  EXPECT_EQ(url->toString(), "tcp://10.77.0.1:4448/");
}

TEST(PeerUrl, IsNothingElse) {
  for (char const* text :
       {"", ":", "t", "tcp:", "tcp://10.77.0.1", "tcp://10.77.0.1:0", "tcp://10.77.0.1:70000",
        "udp://10.77.0.1:4448/", "tcp://host:4448/", "tcp://10.77.0:4448/", "tcp://224.0.0.1:4448/",
        "tcp://255.255.255.255:4448/", "tcp://0.0.0.0:4448/"}) {
    EXPECT_FALSE(PeerUrl::read(text, "tcp")) << text;
  }
}

}  // namespace
}  // namespace ZelvCtl
