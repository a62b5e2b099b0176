#include "zelv/core/RemoteDeviceList.h"

#include <cstdlib>
#include <vector>

#include "zelv/infrastructure/MultiString.h"
#include "zelv/infrastructure/XMLSerializer.h"
#include "zelv/infrastructure/XPathGate.h"
#include "zelv/platform/PCRealDebug.h"

namespace Zelv {

using Infrastructure::HierarchicalDB;
using Infrastructure::MultiString;
using Infrastructure::XMLSerializer;

namespace {

std::string read(HierarchicalDB& aDocument, std::string const& aXPath) {
  std::string result;
  aDocument.getContent(aXPath, result);
  return result;
}

std::string anyDevice(std::string const& aDeviceId) {
  return "/Devices/*[@ID='" + aDeviceId + "']";
}

// Values stand in the list as they were received. Those alone that would be taken for markup are
// escaped, so that a phone called "Tom <3" keeps its services.
std::string element(char const* aName, std::string const& aValue) {
  std::string value = aValue;
  if (value.find_first_of("<&") != std::string::npos) {
    XMLSerializer::escapeXMLEntities(aValue, value);
  }
  return std::string("<") + aName + ">" + value + "</" + aName + ">";
}

std::string entry(char const* aElement, std::string const& aId, std::string const& aInner,
                  std::string const& aStamp) {
  // The closing tag of a phone is a television's. The document takes what the parser has built
  // before it meets the wrong tag, which is the whole element.
  return std::string("<") + aElement + " ID='" + aId + "'>" + aInner + "<LastHeartBeat>" + aStamp +
         "</LastHeartBeat></RemoteTV>";
}

/// Whether all of an entry will arrive in the document. What the services hold comes out of a
/// message unescaped, so that their texts can end the entry early: it would have no stamp, and a
/// device without a stamp never dies.
bool isWhole(char const* aElement, std::string const& aEntry, std::string const& aStamp) {
  HierarchicalDB entry;
  return entry.loadFromString(aEntry) == 0 &&
         read(entry, std::string("/") + aElement + "/LastHeartBeat/text()") == aStamp;
}

}  // namespace

RemoteDeviceList::RemoteDeviceList() {
  mDevices.loadFromString("<Devices/>");
}

bool RemoteDeviceList::isUsableId(std::string const& aDeviceId) {
  return !aDeviceId.empty() && Infrastructure::XPathGate::isQuotableLiteral(aDeviceId);
}

bool RemoteDeviceList::add(HierarchicalDB& aMessage, std::int64_t aNow) {
  std::string const device = "/Envelope/Body/*[1]/Device/";
  std::string const type = read(aMessage, device + "Type/text()");
  bool const isTelevision = type == "TV";
  if (!isTelevision && type != "MOBILE") {
    return false;
  }
  std::string const id = read(aMessage, device + "@ID");
  std::string inner = element("Name", read(aMessage, device + "Name/text()")) +
                      element("Model", read(aMessage, device + "Model/text()"));
  if (isTelevision) {
    inner += element("Location", read(aMessage, device + "Location/text()"));
  }
  inner += read(aMessage, device + "Services");
  if (!put(isTelevision ? "RemoteTV" : "Mobile", id, inner, std::to_string(aNow))) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "DiscoveryService::AddDeviceToList: Device with ID='%s' is not added.",
                       id.c_str());
    return false;
  }
  if (isTelevision) {
    PCRealDebug::Print(PCRealDebug::Notable,
                       "DiscoveryService::AddDeviceToList: Added TV device with ID='%s'",
                       id.c_str());
  } else {
    PCRealDebug::Print(PCRealDebug::Notable,
                       "DiscoveryService::AddDeviceToList: Added MOBILE device with ID='%s'",
                       id.c_str());
  }
  return true;
}

bool RemoteDeviceList::put(char const* aElement, std::string const& aId, std::string const& aInner,
                           std::string const& aStamp) {
  if (!isUsableId(aId)) {
    return false;
  }
  std::string const path = std::string("/Devices/") + aElement + "[@ID='" + aId + "']";
  std::string const text = entry(aElement, aId, aInner, aStamp);
  return hasRoomFor(path) && isWhole(aElement, text, aStamp) &&
         mDevices.setContent(path, text, true) == 0;
}

bool RemoteDeviceList::hasRoomFor(std::string const& aPath) {
  static std::string const last = "/Devices/*[" + std::to_string(MaxDevices) + "]/name()";
  return read(mDevices, last).empty() || !read(mDevices, aPath + "/name()").empty();
}

void RemoteDeviceList::remove(std::string const& aDeviceId) {
  if (isUsableId(aDeviceId)) {
    mDevices.setContent(anyDevice(aDeviceId), "", false);
  }
}

bool RemoteDeviceList::stamp(std::string const& aDeviceId, std::int64_t aNow) {
  return isUsableId(aDeviceId) &&
         mDevices.setContent(anyDevice(aDeviceId) + "/LastHeartBeat/text()", std::to_string(aNow),
                             false) == 0;
}

bool RemoteDeviceList::contains(std::string const& aDeviceId) {
  return isUsableId(aDeviceId) && !read(mDevices, anyDevice(aDeviceId) + "/name()").empty();
}

std::string RemoteDeviceList::typeOf(std::string const& aDeviceId) {
  bool const isTelevision =
      isUsableId(aDeviceId) && read(mDevices, anyDevice(aDeviceId) + "/name()") == "RemoteTV";
  return isTelevision ? "TV" : "MOBILE";
}

std::string RemoteDeviceList::silentSince(std::int64_t aCutOff) {
  return read(mDevices, "/Devices/*[LastHeartBeat<" + std::to_string(aCutOff) + "]/@ID");
}

std::string RemoteDeviceList::ids(char const* aElement) {
  return read(mDevices, std::string("/Devices/") + aElement + "/@ID");
}

std::optional<RemoteDevice> RemoteDeviceList::find(std::string const& aDeviceId) {
  if (!contains(aDeviceId)) {
    return {};
  }
  std::string const device = anyDevice(aDeviceId);
  std::string const stamp = read(mDevices, device + "/LastHeartBeat/text()");
  return RemoteDevice{typeOf(aDeviceId), aDeviceId, read(mDevices, device + "/Name/text()"),
                      std::strtoll(stamp.c_str(), nullptr, 10)};
}

std::vector<RemoteDevice> RemoteDeviceList::all() {
  std::vector<RemoteDevice> devices;
  for (char const* element : {"RemoteTV", "Mobile"}) {
    for (std::string const& id : MultiString::split(ids(element))) {
      if (std::optional<RemoteDevice> device = find(id)) {
        devices.push_back(*std::move(device));
      }
    }
  }
  return devices;
}

void RemoteDeviceList::shiftStamps(std::int64_t aSeconds) {
  for (std::string const& id : MultiString::split(read(mDevices, "/Devices/*/@ID"))) {
    std::string const stamp = read(mDevices, anyDevice(id) + "/LastHeartBeat/text()");
    this->stamp(id, std::strtoll(stamp.c_str(), nullptr, 10) + aSeconds);
  }
}

int RemoteDeviceList::getContent(std::string const& aXPath, std::string& aResult) {
  return mDevices.getContent(aXPath, aResult);
}

int RemoteDeviceList::setContent(std::string const& aXPath, std::string const& aValue) {
  return mDevices.setContent(aXPath, aValue, false);
}

}  // namespace Zelv
