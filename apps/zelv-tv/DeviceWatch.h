#pragma once

#include <array>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "apps/zelv-tv/EventQueue.h"
#include "zelv/Zelv.h"

namespace ZelvTv {

/// Follows the two lists of other devices and tells of arrivals and departures:
/// "arrived TYPE ID ADDRESS NAME" and "left TYPE ID NAME". MUST live until the library has stopped.
///
/// A subscriber is told of a list on the thread that changed it, and the first delivery comes on
/// the data worker; the one may overtake the other. So a delivery only says that there is something
/// to look at. What counts is a read, since reads are answered in their order.
class DeviceWatch : public virtual Zelv::IBaseDataCallback {
 public:
  /// What a device's list is called.
  static constexpr char const* kTelevision = "TV";
  static constexpr char const* kMobile = "MOBILE";

  /// A device that has arrived.
  struct Entry {
    std::string type;
    std::string id;
    std::string address;
    std::string name;
  };

  /// Both arguments outlive the object.
  DeviceWatch(EventQueue& aEvents, Zelv::IAppData& aTree) : mEvents(aEvents), mTree(aTree) {}

  /// Begins to watch; to be called once.
  void Begin();

  /// All that have arrived: televisions first, by ID.
  std::vector<Entry> Entries() const;

  /// The same as lines: "device TYPE ID ADDRESS NAME".
  std::vector<std::string> List() const;

  void onData(std::string const& aXPath, std::string const& aValue,
              Zelv::ContextInformation const* aContext, Zelv::GUID const& aTransactionID) override;
  void onStatus(Zelv::StatusInformation const& aStatus, Zelv::GUID const& aTransactionID) override;

 private:
  struct Device {
    std::string name;
    std::string address;
    /// False until both have been read.
    bool told = false;
  };

  /// One of the two lists.
  struct Kind {
    char const* type;
    std::string branch;
    std::map<std::string, Device> devices;
    /// A read of the list is on its way.
    bool asked = false;
    /// The list has changed since then.
    bool askAgain = false;
  };

  /// A read that is on its way.
  struct Reading {
    enum class What { List, Name, Services };
    Kind* kind;
    What what;
    std::string id;
  };

  void lookAt(Kind& aKind);
  void ask(Kind& aKind, Reading::What aWhat, std::string const& aId, std::string const& aPath);
  void take(Reading const& aReading, std::string const& aValue);
  void compare(Kind& aKind, std::string const& aIds);
  void describe(Kind& aKind, std::string const& aId);

  EventQueue& mEvents;
  Zelv::IAppData& mTree;
  mutable std::mutex mMutex;
  std::array<Kind, 2> mKinds{{{kTelevision, "/Zelv/Devices/RemoteTV", {}, false, false},
                              {kMobile, "/Zelv/Devices/Mobile", {}, false, false}}};
  std::map<Zelv::GUID, Reading> mReadings;
};

}  // namespace ZelvTv
