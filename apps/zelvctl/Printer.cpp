#include "apps/zelvctl/Printer.h"

#include <nlohmann/json.hpp>

#include "apps/zelvctl/PrintableText.h"

namespace ZelvCtl {

namespace {

nlohmann::json asJson(Device const& aDevice) {
  return {{"id", aDevice.id},
          {"type", aDevice.type},
          {"name", aDevice.name},
          {"model", aDevice.model},
          {"address", aDevice.address}};
}

/// A column, and the gap behind it.
std::string column(std::string const& aText, std::size_t aWidth) {
  std::string text = aText.empty() ? "-" : PrintableText::masked(aText);
  text.resize(std::max(text.size(), aWidth), ' ');
  return text + "  ";
}

std::string asText(Device const& aDevice) {
  return column(aDevice.type, 6) + column(aDevice.id, 36) + column(aDevice.address, 15) +
         PrintableText::masked(aDevice.name) + "\n";
}

}  // namespace

void Printer::list(std::vector<Device> const& aDevices) {
  if (mJson) {
    nlohmann::json all = nlohmann::json::array();
    for (Device const& device : aDevices) {
      all.push_back(asJson(device));
    }
    mOutput.print(all);
    return;
  }
  std::string text;
  for (Device const& device : aDevices) {
    text += asText(device);
  }
  mOutput.print(text);
}

void Printer::change(bool aArrived, Device const& aDevice) {
  if (mJson) {
    nlohmann::json line = asJson(aDevice);
    line["event"] = aArrived ? "arrived" : "left";
    mOutput.print(line);
  } else {
    mOutput.print((aArrived ? "+ " : "- ") + asText(aDevice));
  }
}

}  // namespace ZelvCtl
