#include "zelv/adapter/OneHost.h"

#include <gtest/gtest.h>

namespace {

using Zelv::Adapter::isOneHost;
using Zelv::Infrastructure::URL;

TEST(OneHost, IsNeitherAGroupNorAllNorNone) {
  for (char const* text : {"tcp://224.0.0.1:4448/", "udp://239.255.255.255:1/",
                           "udp://255.255.255.255:4448/", "tcp://0.0.0.0:4448/"}) {
    EXPECT_FALSE(isOneHost(URL(text))) << text;
  }
}

TEST(OneHost, IsNoneOfTheseInAnotherSpellingEither) {
  for (char const* text :
       {"udp://0xe0.0.0.1:1/", "udp://0340.0.0.1:1/", "udp://3758096385:1/", "udp://0xEFFFFFFF:1/",
        "udp://239.255.11310:1/", "tcp://0:1/", "tcp://0x0:1/", "tcp://00.0x0.0.0:1/",
        "tcp://0.0:1/", "udp://224.0.0.1 :1/", "tcp://0 x:1/"}) {
    EXPECT_FALSE(isOneHost(URL(text))) << text;
  }
}

TEST(OneHost, IsAnyOtherAddressAndAnyName) {
  for (char const* text :
       {"tcp://192.0.2.7:4448/", "udp://127.0.0.1:4448/", "tcp://10.0.0.255:1/",
        "tcp://phone:4448/", "tcp://0x7f.1:1/", "tcp://223.255.255.255:1/", "tcp://240.0.0.1:1/"}) {
    EXPECT_TRUE(isOneHost(URL(text))) << text;
  }
}

}  // namespace
