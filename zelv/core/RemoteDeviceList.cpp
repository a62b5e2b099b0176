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

}  // namespace

RemoteDeviceList::RemoteDeviceList() {
  mDevices.loadFromString("<Devices/>");
}

void RemoteDeviceList::add(HierarchicalDB& aMessage, std::int64_t aNow) {
  std::string const device = "/Envelope/Body/*[1]/Device/";
  std::string const type = read(aMessage, device + "Type/text()");
  if (type != "TV" && type != "MOBILE") {
    return;
  }
  std::string const id = read(aMessage, device + "@ID");
  if (!Infrastructure::XPathGate::isQuotableLiteral(id) || !hasRoomFor(id)) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "DiscoveryService::AddDeviceToList: Device with ID='%s' is not added.",
                       id.c_str());
    return;
  }
  std::string inner = element("Name", read(aMessage, device + "Name/text()")) +
                      element("Model", read(aMessage, device + "Model/text()"));
  if (type == "TV") {
    inner += element("Location", read(aMessage, device + "Location/text()"));
  }
  inner += read(aMessage, device + "Services");
  type == "TV" ? addTelevision(id, inner, aNow) : addMobile(id, inner, aNow);
}

bool RemoteDeviceList::hasRoomFor(std::string const& aDeviceId) {
  if (contains(aDeviceId)) {
    return true;
  }
  return MultiString::split(read(mDevices, "/Devices/*/@ID")).size() < MaxDevices;
}

void RemoteDeviceList::addTelevision(std::string const& aId, std::string const& aInner,
                                     std::int64_t aNow) {
  mDevices.setContent("/Devices/RemoteTV[@ID='" + aId + "']",
                      "<RemoteTV ID='" + aId + "'>" + aInner + "<LastHeartBeat>" +
                          std::to_string(aNow) + "</LastHeartBeat></RemoteTV>",
                      true);
  PCRealDebug::Print(PCRealDebug::Notable,
                     "DiscoveryService::AddDeviceToList: Added TV device with ID='%s'",
                     aId.c_str());
}

// The closing tag is a television's here too. The document takes what the parser has built before
// it meets the wrong tag, which is the whole element.
void RemoteDeviceList::addMobile(std::string const& aId, std::string const& aInner,
                                 std::int64_t aNow) {
  mDevices.setContent("/Devices/Mobile[@ID='" + aId + "']",
                      "<Mobile ID='" + aId + "'>" + aInner + "<LastHeartBeat>" +
                          std::to_string(aNow) + "</LastHeartBeat></RemoteTV>",
                      true);
  PCRealDebug::Print(PCRealDebug::Notable,
                     "DiscoveryService::AddDeviceToList: Added MOBILE device with ID='%s'",
                     aId.c_str());
}

void RemoteDeviceList::remove(std::string const& aDeviceId) {
  if (Infrastructure::XPathGate::isQuotableLiteral(aDeviceId)) {
    mDevices.setContent(anyDevice(aDeviceId), "", false);
  }
}

bool RemoteDeviceList::stamp(std::string const& aDeviceId, std::int64_t aNow) {
  return Infrastructure::XPathGate::isQuotableLiteral(aDeviceId) &&
         mDevices.setContent(anyDevice(aDeviceId) + "/LastHeartBeat/text()", std::to_string(aNow),
                             false) == 0;
}

bool RemoteDeviceList::contains(std::string const& aDeviceId) {
  return Infrastructure::XPathGate::isQuotableLiteral(aDeviceId) &&
         !read(mDevices, anyDevice(aDeviceId) + "/name()").empty();
}

std::string RemoteDeviceList::typeOf(std::string const& aDeviceId) {
  bool const isTelevision = Infrastructure::XPathGate::isQuotableLiteral(aDeviceId) &&
                            read(mDevices, anyDevice(aDeviceId) + "/name()") == "RemoteTV";
  return isTelevision ? "TV" : "MOBILE";
}

std::string RemoteDeviceList::silentSince(std::int64_t aCutOff) {
  return read(mDevices, "/Devices/*[LastHeartBeat<" + std::to_string(aCutOff) + "]/@ID");
}

std::string RemoteDeviceList::ids(char const* aElement) {
  return read(mDevices, std::string("/Devices/") + aElement + "/@ID");
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
