#include "apps/zelvctl/Printer.h"

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

/// A text that is no UTF-8 is shown with marks in the places that are none, rather than not at all.
std::string dump(nlohmann::json const& aJson) {
  return aJson.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

/// What strangers send must neither break the line nor steer the terminal.
std::string printable(std::string const& aText) {
  std::string text;
  unsigned before = 0;
  for (char const letter : aText) {
    auto const byte = static_cast<unsigned char>(letter);
    bool const isControl = byte < 0x20 || byte == 0x7f;
    // U+0080 to U+009F, which some terminals obey too.
    bool const isSecondHalf = before == 0xc2 && byte >= 0x80 && byte < 0xa0;
    if (isSecondHalf) {
      text.pop_back();
    }
    text += isControl || isSecondHalf ? '?' : letter;
    before = byte;
  }
  return text;
}

/// A column, and the gap behind it.
std::string column(std::string const& aText, std::size_t aWidth) {
  std::string text = aText.empty() ? "-" : printable(aText);
  text.resize(std::max(text.size(), aWidth), ' ');
  return text + "  ";
}

std::string asText(Device const& aDevice) {
  return column(aDevice.type, 6) + column(aDevice.id, 36) + column(aDevice.address, 15) +
         printable(aDevice.name) + "\n";
}

}  // namespace

void Printer::print(std::string const& aText) {
  std::lock_guard const lock(mLock);
  mOut << aText << std::flush;
  if (!mOut) {
    mBroken = true;
  }
}

void Printer::list(std::vector<Device> const& aDevices) {
  if (mJson) {
    nlohmann::json all = nlohmann::json::array();
    for (Device const& device : aDevices) {
      all.push_back(asJson(device));
    }
    print(dump(all));
    return;
  }
  std::string text;
  for (Device const& device : aDevices) {
    text += asText(device);
  }
  print(text);
}

void Printer::change(bool aArrived, Device const& aDevice) {
  if (mJson) {
    nlohmann::json line = asJson(aDevice);
    line["event"] = aArrived ? "arrived" : "left";
    print(dump(line));
  } else {
    print((aArrived ? "+ " : "- ") + asText(aDevice));
  }
}

}  // namespace ZelvCtl
