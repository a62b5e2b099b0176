#include "bench/Documents.h"

#include <cstdio>

namespace Zelv::Bench {

namespace {

std::string device(int aIndex) {
  return "<Mobile ID=\"" + Documents::deviceId(aIndex) + "\"><Name>" +
         Documents::deviceName(aIndex) + "</Name><Model>M" + std::to_string(aIndex % 7) +
         "</Model><LastHeartBeat>" + std::to_string(Documents::heartBeat(aIndex)) +
         "</LastHeartBeat></Mobile>\n";
}

std::string service(int aIndex) {
  return "<Service><Name>" + Documents::serviceName(aIndex) + "</Name><Port>" +
         Documents::devicePort(aIndex) + "</Port></Service>\n";
}

}  // namespace

Documents::Documents(std::size_t aBytes) {
  std::string devices;
  std::string services;
  while (devices.size() + services.size() + 60 < aBytes) {
    devices += device(mDevices);
    services += service(mDevices);
    ++mDevices;
  }
  mText = "<Devices>\n<Services>\n" + services + "</Services>\n" + devices + "</Devices>\n";
}

std::string Documents::deviceId(int aIndex) {
  char text[40];
  std::snprintf(text, sizeof text, "%08x-01e0-41cd-950e-%012x", 0x2cb63c08U + unsigned(aIndex),
                unsigned(aIndex) * 7919U);
  return text;
}

std::string Documents::serviceName(int aIndex) {
  return "Service" + std::to_string(aIndex);
}
std::string Documents::devicePort(int aIndex) {
  return std::to_string(4446 + aIndex % 1000);
}
std::string Documents::deviceName(int aIndex) {
  return "Phone " + std::to_string(aIndex);
}

// One device in ten has been silent, so that a sweep finds a tenth of them.
int Documents::heartBeat(int aIndex) {
  return aIndex % 10 == 5 ? 1000 : 5000;
}

}  // namespace Zelv::Bench
