#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "zelv/interfaces/GUID.h"
#include "zelv/platform/Export.h"

namespace Zelv {

/// Who waits for whom: what decides on a change, and what the system is busy with.
///
/// Both operations may be called on any thread while the system runs, also from within callbacks;
/// for start and stop the rules of InterfaceFactory hold. They start nothing: without a running
/// system they give nothing. What they give is a copy, taken part by part while the system goes on,
/// so that numbers of different parts need not fit each other.
///
/// They are made for people who look for a fault. Their cost grows with what there is to tell: an
/// explanation holds up deliveries of changes while it goes through the subscriptions.
class ZELV_EXPORT Diagnostics {
 public:
  Diagnostics() = delete;

  /// What decides for a subscription when a path changes. They are tried in this order, and the
  /// first that holds decides.
  enum class Rule {
    NoChange,    ///< the changed path does not begin with "/Zelv": nobody hears of it
    RemoteData,  ///< the subscription is on another device's data, not told
    OneTime,     ///< it is a request, which waits for its one answer, not told
    Excluded,    ///< its subscriber is left out of this change, or is nobody, not told
    SamePath,    ///< it is on exactly the changed path: told at once, with the new value
    Sibling,     ///< it is in an element of another ID, not told
    Attribute,   ///< a text changed and it is on an attribute, not told
    Unmatched,   ///< neither path lies below the other, not told
    Nested,      ///< one lies below the other: its own path is read again and it is told that value
  };

  /// What a change would mean for one subscription.
  struct Explanation {
    /// As IBaseData::subscribeData() or requestData() returned it.
    GUID id;
    /// As the subscriber wrote it.
    std::string path;
    /// The class of the subscriber, with its namespaces; empty for nobody.
    std::string subscriber;
    Rule rule = Rule::NoChange;
    bool told = false;
    /// True for what another device has subscribed to here: changes that stay on this device, as
    /// those of the lists of devices do, are withheld from it, whatever rule is named here.
    bool withheld = false;
  };

  /// One queue of texts to a service of another device.
  struct DeviceQueue {
    /// "command" or "data".
    std::string service;
    /// The device's ID; may be empty.
    std::string device;
    std::string url;
    /// Those that wait, without the one being sent, and their bytes.
    std::size_t texts = 0;
    std::size_t bytes = 0;
    /// Since the queue was made.
    std::uint64_t sent = 0;
    /// Too many, too often tried, or not sent at the end.
    std::uint64_t dropped = 0;
  };

  /// One call to an object of a component or an application.
  struct Call {
    /// The operation, as "getData"; empty when there was no call yet.
    std::string operation;
    /// The class of the object, with its namespaces. Where many subscribers of one path are told,
    /// they are timed together at first, and this says of how many it was one.
    std::string callee;
    /// The path, or the name of the command or the timer, or the type of the input; 1,024 bytes of
    /// it at most.
    std::string subject;
    std::int64_t nanoseconds = 0;
  };

  /// A request to another device that is still in the table of subscriptions.
  struct Request {
    GUID id;
    std::string path;
    /// Milliseconds since it was made.
    std::int64_t age = 0;
    /// An answer came; it stays until unsubscribeData(), or until many others were answered later.
    bool answered = false;
  };

  /// A device of the home.
  struct Peer {
    /// "TV" or "MOBILE".
    std::string type;
    std::string id;
    std::string name;
    /// Seconds since it was last heard.
    std::int64_t age = 0;
  };

  /// A device that left, and has not come back.
  struct DepartedPeer {
    std::string type;
    std::string id;
    std::string name;
    /// Seconds since it left.
    std::int64_t age = 0;
    /// True when it said goodbye, false when it was silent for too long.
    bool saidGoodbye = false;
  };

  struct Statistics {
    /// Data tasks, command tasks and input events that wait for their thread.
    std::size_t dataTasks = 0;
    std::size_t commandTasks = 0;
    std::size_t inputs = 0;
    std::vector<DeviceQueue> deviceQueues;

    /// What this set and others have asked of each other and wait for; of them what others have
    /// subscribed to here.
    std::size_t remoteContexts = 0;
    std::size_t remoteSubscriptions = 0;

    /// Commands whose device's address is being asked for; callbacks that wait for return values.
    std::size_t pendingCommands = 0;
    std::size_t commandCallbacks = 0;

    /// Since the start: the longest read or write of a provider, and the longest call of any other
    /// callback, those of the library's own parts included. Lifetime commands are not counted.
    Call longestProviderCall;
    Call longestCallback;

    /// All of them, and the oldest in full, oldest first.
    std::size_t requests = 0;
    std::vector<Request> oldestRequests;

    /// The names of the library's threads that run, and how many are parked for reuse.
    std::vector<std::string> threads;
    std::size_t parkedThreads = 0;

    /// Empty when the set has no discovery of its own.
    std::vector<Peer> peers;
    /// The last 64 at most, the one that left last first.
    std::vector<DepartedPeer> departedPeers;
  };

  /// So many requests are told in full.
  static constexpr std::size_t cOldestRequests = 64;

  /// What a change of this path would mean for each subscription, in the order in which they would
  /// be told. Nobody is told.
  static std::vector<Explanation> explain(std::string const& aXPath);

  /// A rule as a sentence for people.
  static char const* reasonOf(Rule aRule);

  /// Nothing when no system runs.
  static std::optional<Statistics> statistics();
};

}  // namespace Zelv
