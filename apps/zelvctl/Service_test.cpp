#include "apps/zelvctl/Service.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace ZelvCtl {
namespace {

Device deviceWith(std::string const& aUrl) {
  return {"id", "TV", "Kitchen", "M1", "10.77.0.1", {{"DataControl", aUrl}}};
}

TEST(Service, StandsAtAFixedPortOfAnAddressGivenByHand) {
  EXPECT_EQ(Service::data().at("10.77.0.1").toString(), "tcp://10.77.0.1:4446/");
  EXPECT_EQ(Service::commands().at("10.77.0.1").toString(), "tcp://10.77.0.1:4448/");
  EXPECT_EQ(Service::input().at("10.77.0.1").toString(), "udp://10.77.0.1:4449/");
  EXPECT_EQ(Service::assets().at("10.77.0.1").toString(), "http://10.77.0.1:4450/");
}

TEST(Service, StandsWhereADeviceAnnouncesIt) {
  EXPECT_EQ(Service::data().of(deviceWith("tcp://10.77.0.1:5000/")).toString(),
            "tcp://10.77.0.1:5000/");
}

TEST(Service, IsMissedByName) {
  try {
    Service::commands().of(deviceWith("tcp://10.77.0.1:5000/"));
    ADD_FAILURE() << "there is none";
  } catch (std::runtime_error const& error) {
    EXPECT_STREQ(error.what(), "'Kitchen' has no CommandControl service");
  }
}

TEST(Service, LeadsToNoPlaceThatIsNoneOfOneDevice) {
  for (char const* url : {"", "nowhere", "udp://10.77.0.1:4446/", "tcp://10.77.0.1/",
                          "tcp://10.77.0.1:0/", "tcp://10.77.0.1:65536/", "tcp://a.example:4446/",
                          "tcp://239.255.44.46:4446/", "tcp://255.255.255.255:4446/"}) {
    EXPECT_THROW(Service::data().of(deviceWith(url)), std::runtime_error) << url;
  }
}

}  // namespace
}  // namespace ZelvCtl
