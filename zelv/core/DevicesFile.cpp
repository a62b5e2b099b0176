#include "zelv/core/DevicesFile.h"

#include <string>

#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/infrastructure/ZelvFileUtil.h"
#include "zelv/platform/Directories.h"
#include "zelv/platform/PCRealDebug.h"

namespace Zelv {

namespace {

char const* const required[] = {
    "/Devices/MulticastGroup",
    "/Devices/MulticastPort",
    "/Devices/HeartBeatInterval",
    "/Devices/LocalTV/@ID",
    "/Devices/LocalTV/Name",
    "/Devices/LocalTV/Model",
    "/Devices/LocalTV/Location",
    "/Devices/LocalTV/Interfaces/NetworkInterface[@ID='1']/MACAddress",
    "/Devices/LocalTV/Interfaces/NetworkInterface[@ID='1']/IPv4/Address",
};

}  // namespace

bool DevicesFile::isComplete(Infrastructure::HierarchicalDB& aDocument) {
  std::string ignored;
  for (char const* path : required) {
    if (aDocument.getContent(path, ignored) != 0) {
      return false;
    }
  }
  return true;
}

void DevicesFile::repairIfIncomplete(Infrastructure::HierarchicalDB& aDocument) {
  if (isComplete(aDocument)) {
    return;
  }
  PCRealDebug::Print(
      PCRealDebug::Error,
      "MultiDevice::MultiDevice: Devices file lacks a required element, restoring it.");
  std::string const directory = Platform::Directories::Writable();
  bool const restored = Infrastructure::ZelvFileUtil::restoreFile("Devices.xml", directory) == 0 &&
                        aDocument.loadFromFile(directory + "Devices.xml") == 0 &&
                        isComplete(aDocument);
  if (!restored) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "MultiDevice::MultiDevice: The restored Devices file lacks it too.");
  }
}

}  // namespace Zelv
