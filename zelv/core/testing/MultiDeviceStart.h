#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "zelv/adapter/testing/Peer.h"
#include "zelv/core/testing/MultiDeviceTest.h"
#include "zelv/platform/fake/FakeFiles.h"
#include "zelv/platform/fake/FakeInterfaces.h"

namespace Zelv::Testing {

/// The start of a set with a device branch.
class MultiDeviceStart : public MultiDeviceTest {
 protected:
  static constexpr char const* cIdentity = "a1897a99-3255-4ad5-852f-b2cedce72768";

  void configure(std::string const& aSwitches) const {
    set.directories.putReadOnly("Configuration.xml",
                                "<Configuration>" + aSwitches + "</Configuration>");
  }

  /// Discovery on, in a group that is this machine alone.
  void configureDiscovery() {
    configure("<ZelvDiscovery>true</ZelvDiscovery>");
    std::string const port = std::to_string(Peer::freePort(Peer::Datagram));
    std::string file = devices("");
    file.replace(file.find("4451"), 4, port);
    set.directories.putReadOnly("Devices.xml", file);
    Platform::Fake::FakeInterfaces::Set({{"eth0", {2, 0, 0, 0, 0, 1}, {"127.0.0.1"}}});
  }

  void put(std::string const& aId, std::string const& aRest = "") const {
    set.directories.putWritable("Configuration.xml", SmallSet::cConfiguration);
    set.directories.putWritable("Applications.xml", SmallSet::cApplications);
    set.directories.putWritable("Devices.xml", devices(aId, aRest));
  }

  /// Nothing can be made, changed or removed in the writable directory any more.
  static void makeReadOnly() {
    Platform::Fake::FakeFiles::FailFrom(Platform::Fake::FakeFiles::Write);
    Platform::Fake::FakeFiles::FailFrom(Platform::Fake::FakeFiles::Rename);
    Platform::Fake::FakeFiles::FailFrom(Platform::Fake::FakeFiles::Remove);
  }

  void restart() {
    InterfaceFactory::terminate();
    start();
  }

  /// The lines of this level that the start of the device branch wrote, in order.
  std::vector<std::string> linesOf(unsigned long aLevel, std::string const& aBegin) const {
    std::vector<std::string> found;
    for (std::string const& text : set.log.texts(aLevel)) {
      if (text.starts_with(aBegin)) {
        found.push_back(text);
      }
    }
    return found;
  }

  /// The first place in the log at which a text stands.
  std::size_t placeOf(std::string const& aText) const {
    auto const lines = set.log.lines();
    std::size_t place = 0;
    while (place < lines.size() && lines[place].text != aText) {
      ++place;
    }
    EXPECT_LT(place, lines.size()) << aText << "\n" << set.log.dump();
    return place;
  }
};

}  // namespace Zelv::Testing
