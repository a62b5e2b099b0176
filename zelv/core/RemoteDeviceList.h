#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "zelv/core/RemoteDevice.h"
#include "zelv/infrastructure/HierarchicalDB.h"

namespace Zelv {

/// The remote devices that discovery knows of, as a document: below the root "Devices" one
/// "RemoteTV" or "Mobile" for each, in order of last addition.
///
/// Each operation locks the document for itself; what needs several to be one step locks around
/// them.
class RemoteDeviceList {
 public:
  /// Most devices that are kept; more are not added.
  static constexpr std::size_t MaxDevices = 1024;

  RemoteDeviceList();

  /// Whether an ID can be asked for between quotes. What has another one is nobody's device: it is
  /// not added, and matches nothing.
  static bool isUsableId(std::string const& aDeviceId);

  /// Adds the device that a Hello, ProbeMatch or ResolveMatch describes, or puts it in the place of
  /// the one of the same ID. @return false, with the list as it was, for other types than "TV" and
  /// "MOBILE", for an ID that is not usable, for a description that would break its entry, and for
  /// one device too many.
  bool add(Infrastructure::HierarchicalDB& aMessage, std::int64_t aNow);

  void remove(std::string const& aDeviceId);

  /// Notes that the device has been heard. @return false when it is not in the list.
  bool stamp(std::string const& aDeviceId, std::int64_t aNow);

  bool contains(std::string const& aDeviceId);

  /// "TV" for a television; "MOBILE" for all else, unknown devices included.
  std::string typeOf(std::string const& aDeviceId);

  /// The IDs of those not heard since aCutOff, as a multi-string.
  std::string silentSince(std::int64_t aCutOff);

  /// The IDs of all "RemoteTV" or "Mobile", as a multi-string.
  std::string ids(char const* aElement);

  /// None when there is no such device.
  std::optional<RemoteDevice> find(std::string const& aDeviceId);

  /// Televisions first. Devices that come or go meanwhile may be left out.
  std::vector<RemoteDevice> all();

  /// Moves all stamps, when the wall clock has jumped.
  void shiftStamps(std::int64_t aSeconds);

  /// Reads and writes below "/Devices". As HierarchicalDB's.
  int getContent(std::string const& aXPath, std::string& aResult);
  int setContent(std::string const& aXPath, std::string const& aValue);

 private:
  bool put(char const* aElement, std::string const& aId, std::string const& aInner,
           std::string const& aStamp);
  bool hasRoomFor(std::string const& aPath);

  Infrastructure::HierarchicalDB mDevices;
};

}  // namespace Zelv
