#include "zelv/core/DevicesFile.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <string>

#include "zelv/core/DocumentFile.h"
#include "zelv/infrastructure/GUID.h"
#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/infrastructure/XPathGate.h"
#include "zelv/platform/Directories.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/Shell.h"

namespace Zelv {

using Infrastructure::GUID;
using Infrastructure::HierarchicalDB;
using Platform::Directories;

namespace {

char const* const identityPath = "/Devices/LocalTV/@ID";

char const* const requiredElements[] = {
    "/Devices/MulticastGroup",
    "/Devices/MulticastPort",
    "/Devices/HeartBeatInterval",
    "/Devices/LocalTV",
    "/Devices/LocalTV/Name",
    "/Devices/LocalTV/Model",
    "/Devices/LocalTV/Location",
    "/Devices/LocalTV/Interfaces/NetworkInterface[@ID='1']/MACAddress",
    "/Devices/LocalTV/Interfaces/NetworkInterface[@ID='1']/IPv4/Address",
};

/// Asked by name, since contents can look like anything.
bool standsOnce(HierarchicalDB& aDocument, std::string const& aPath) {
  std::string names;
  aDocument.getContent(aPath + "/name()", names);
  return names == aPath.substr(aPath.rfind('/') + 1);
}

std::string identityIn(HierarchicalDB& aDocument) {
  std::string identity;
  aDocument.getContent(identityPath, identity);
  return identity;
}

/// Not by copying the file over: the identity would be lost if the set went down before it is
/// written again.
void restore(HierarchicalDB& aDocument) {
  std::string const identity = identityIn(aDocument);
  aDocument.loadFromFile(Directories::ReadOnly() + DevicesFile::Name);
  if (DevicesFile::isIdentity(identity)) {
    aDocument.setContent(identityPath, identity, /*aCreate=*/false);
  }
  if (!DevicesFile::save(aDocument)) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "MultiDevice::MultiDevice: The restored Devices file is not saved, going "
                       "on.");
  }
}

bool canBeRestored() {
  HierarchicalDB factory;
  return factory.loadFromFile(Directories::ReadOnly() + DevicesFile::Name) == 0 &&
         DevicesFile::isComplete(factory);
}

}  // namespace

bool DevicesFile::isComplete(HierarchicalDB& aDocument) {
  std::string ignored;
  return aDocument.getContent(identityPath, ignored) == 0 &&
         std::all_of(std::begin(requiredElements), std::end(requiredElements),
                     [&](char const* aPath) { return standsOnce(aDocument, aPath); });
}

void DevicesFile::repairIfIncomplete(HierarchicalDB& aDocument) {
  if (isComplete(aDocument)) {
    return;
  }
  PCRealDebug::Print(PCRealDebug::Error,
                     "MultiDevice::MultiDevice: Devices file lacks a required element or holds it "
                     "twice, restoring it.");
  if (!canBeRestored()) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "MultiDevice::MultiDevice: So does the factory file, going on as it is.");
    return;
  }
  restore(aDocument);
}

bool DevicesFile::isIdentity(std::string const& aText) {
  try {
    return Infrastructure::XPathGate::isQuotableLiteral(aText) && GUID(aText) != GUID::nullGUID;
  } catch (std::exception const&) {
    return false;
  }
}

bool DevicesFile::save(HierarchicalDB& aDocument) {
  if (!DocumentFile::save(aDocument, Directories::Writable() + Name, "MultiDevice::setData")) {
    return false;
  }
  Platform::Shell::Run("sync");
  return true;
}

}  // namespace Zelv
