#include "apps/zelv-tv/DeviceWatch.h"

#include <exception>
#include <set>
#include <utility>

#include "apps/zelv-tv/ValueText.h"
#include "zelv/infrastructure/MultiString.h"
#include "zelv/infrastructure/URL.h"

namespace ZelvTv {

using Zelv::Infrastructure::MultiString;
using Zelv::Infrastructure::URL;

namespace {

/// The host of the first service; a phone may have none.
std::string addressOf(std::string const& aUrls) {
  try {
    return URL(aUrls.substr(0, aUrls.find(MultiString::Separator))).getDomainName();
  } catch (std::exception const&) {
    return "";
  }
}

std::string lineOf(char const* aWord, std::string const& aType, std::string const& aId,
                   std::string const& aAddress, std::string const& aName) {
  return std::string(aWord) + " " + aType + " " + ValueText::ToField(aId) + " " +
         ValueText::ToField(aAddress) + " " + ValueText::ToLine(aName);
}

}  // namespace

void DeviceWatch::Begin() {
  for (Kind const& kind : mKinds) {
    mTree.subscribeData(kind.branch + "/@ID", nullptr, this);
  }
}

std::vector<DeviceWatch::Entry> DeviceWatch::Entries() const {
  std::lock_guard const lock(mMutex);
  std::vector<Entry> entries;
  for (Kind const& kind : mKinds) {
    for (auto const& [id, device] : kind.devices) {
      if (device.told) {
        entries.push_back({kind.type, id, device.address, device.name});
      }
    }
  }
  return entries;
}

std::vector<std::string> DeviceWatch::List() const {
  std::vector<std::string> lines;
  for (Entry const& entry : Entries()) {
    lines.push_back(lineOf("device", entry.type, entry.id, entry.address, entry.name));
  }
  return lines;
}

// The lock is held over the calls into the tree, so that an answer waits until its reading is
// noted. The tree calls nobody back while it queues a read.
void DeviceWatch::onData(std::string const& aXPath, std::string const& aValue,
                         Zelv::ContextInformation const* /*aContext*/,
                         Zelv::GUID const& aTransactionID) {
  std::lock_guard const lock(mMutex);
  if (auto const reading = mReadings.extract(aTransactionID)) {
    take(reading.mapped(), aValue);
    return;
  }
  for (Kind& kind : mKinds) {
    if (aXPath == kind.branch + "/@ID") {
      lookAt(kind);
    }
  }
}

void DeviceWatch::onStatus(Zelv::StatusInformation const& /*aStatus*/,
                           Zelv::GUID const& aTransactionID) {
  std::lock_guard const lock(mMutex);
  // A failure may be reported twice; the second time it is not known any more.
  if (auto const reading = mReadings.extract(aTransactionID)) {
    take(reading.mapped(), "");
  }
}

void DeviceWatch::lookAt(Kind& aKind) {
  if (aKind.asked) {
    aKind.askAgain = true;
    return;
  }
  aKind.asked = true;
  ask(aKind, Reading::What::List, "", aKind.branch + "/@ID");
}

void DeviceWatch::ask(Kind& aKind, Reading::What aWhat, std::string const& aId,
                      std::string const& aPath) {
  Zelv::GUID const id = mTree.requestData(aPath, nullptr, this);
  mReadings.emplace(id, Reading{&aKind, aWhat, aId});
}

void DeviceWatch::take(Reading const& aReading, std::string const& aValue) {
  Kind& kind = *aReading.kind;
  if (aReading.what == Reading::What::List) {
    kind.asked = false;
    compare(kind, aValue);
    if (std::exchange(kind.askAgain, false)) {
      lookAt(kind);
    }
    return;
  }
  auto const entry = kind.devices.find(aReading.id);
  if (entry == kind.devices.end()) {
    return;  // gone before it was described
  }
  Device& device = entry->second;
  if (aReading.what == Reading::What::Name) {
    device.name = aValue;
  } else if (!std::exchange(device.told, true)) {
    device.address = addressOf(aValue);
    mEvents.Post(lineOf("arrived", kind.type, aReading.id, device.address, device.name));
  }
}

void DeviceWatch::compare(Kind& aKind, std::string const& aIds) {
  auto const ids = MultiString::split(aIds);
  std::set<std::string> const present(ids.begin(), ids.end());
  std::erase_if(aKind.devices, [&](auto const& aEntry) {
    auto const& [id, device] = aEntry;
    bool const gone = !present.contains(id);
    if (gone && device.told) {
      mEvents.Post(std::string("left ") + aKind.type + " " + ValueText::ToField(id) + " " +
                   ValueText::ToLine(device.name));
    }
    return gone;
  });
  for (std::string const& id : present) {
    if (aKind.devices.try_emplace(id).second) {
      describe(aKind, id);
    }
  }
}

// The list takes in no ID with a quote or a bracket, so it can stand in a path.
void DeviceWatch::describe(Kind& aKind, std::string const& aId) {
  std::string const device = aKind.branch + "[@ID='" + aId + "']";
  ask(aKind, Reading::What::Name, aId, device + "/Name/text()");
  ask(aKind, Reading::What::Services, aId, device + "/Services/Service/URL/text()");
}

}  // namespace ZelvTv
