#include "apps/zelvctl/Printer.h"

#include <cstdio>
#include <iostream>
#include <nlohmann/json.hpp>

namespace ZelvCtl {

namespace {

nlohmann::json asJson(Device const& aDevice) {
  return {{"id", aDevice.id},
          {"type", aDevice.type},
          {"name", aDevice.name},
          {"model", aDevice.model},
          {"address", aDevice.address}};
}

/// What strangers send must neither break the line nor steer the terminal.
std::string printable(std::string const& aText) {
  std::string text;
  for (char const letter : aText) {
    text += static_cast<unsigned char>(letter) < 0x20 || letter == 0x7f ? '?' : letter;
  }
  return text;
}

std::string asText(Device const& aDevice) {
  char line[512];
  std::snprintf(line, sizeof line, "%-6s  %-36s  %-15s  %s", printable(aDevice.type).c_str(),
                printable(aDevice.id).c_str(),
                aDevice.address.empty() ? "-" : printable(aDevice.address).c_str(),
                printable(aDevice.name).c_str());
  return line;
}

/// A text that is no UTF-8 is shown with marks in the places that are none, rather than not at all.
std::string dump(nlohmann::json const& aJson) {
  return aJson.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace

void Printer::list(std::vector<Device> const& aDevices) {
  std::lock_guard lock(mLock);
  if (mJson) {
    nlohmann::json all = nlohmann::json::array();
    for (Device const& device : aDevices) {
      all.push_back(asJson(device));
    }
    std::cout << dump(all) << std::endl;
    return;
  }
  for (Device const& device : aDevices) {
    std::cout << asText(device) << '\n';
  }
  std::cout.flush();
}

void Printer::change(bool aArrived, Device const& aDevice) {
  std::lock_guard lock(mLock);
  if (mJson) {
    nlohmann::json line = asJson(aDevice);
    line["event"] = aArrived ? "arrived" : "left";
    std::cout << dump(line) << std::endl;
  } else {
    std::cout << (aArrived ? "+ " : "- ") << asText(aDevice) << std::endl;
  }
}

}  // namespace ZelvCtl
