#pragma once

#include <memory>
#include <string>
#include <vector>

#include "apps/zelvctl/Loop.h"
#include "apps/zelvctl/Mailbox.h"
#include "apps/zelvctl/Options.h"
#include "apps/zelvctl/Phone.h"
#include "apps/zelvctl/PhoneMessages.h"
#include "apps/zelvctl/Presence.h"
#include "apps/zelvctl/Service.h"

namespace ZelvCtl {

/// A service of a device that has been found.
struct Target {
  std::string name;  ///< as people call it
  std::string id;    ///< empty for one that was given by its address
  Zelv::Infrastructure::URL url;
};

/// What the verbs that speak to devices have in common: who this phone is, where it is told of
/// answers, the way to a device, and the time that is left. All operations throw std::runtime_error
/// on what keeps them from it, Interrupted if that is the signal to stop.
class Errand {
 public:
  /// @param aStopDescriptor  readable once the program is to end; outlives the object, as aOptions
  ///                         does.
  Errand(Options const& aOptions, int aStopDescriptor);

  Options const& options() const { return mOptions; }
  Identity const& identity() const { return mIdentity; }
  Loop& loop() { return mLoop; }

  /// Takes messages, served by loop() from now on. @param aPort  as for Mailbox.
  /// @return the URL to tell others.
  std::string openMailbox(std::uint16_t aPort, Mailbox::Receiver aReceiver);

  /// Tells the home where this phone takes commands, once it joins.
  void offerCommands(std::string const& aUrl) { mIdentity.commandUrl = aUrl; }

  /// Takes part in the home from now on, with heartbeats, until the errand ends.
  void join();

  /// The service of the device that was asked for. An address is taken as it is; for a name or an
  /// ID the home is joined and asked.
  Target find(Service const& aService);

  /// Whether a device that was found comes and goes; told of it once it is asked to follow().
  Presence& presence() { return mPresence; }

  /// Sends over TCP and waits until the text has been taken.
  void deliver(Target const& aTarget, std::string const& aText);

  /// Waits for aDone. @return false when the time is over.
  bool await(std::function<bool()> const& aDone);

  /// The time to wait begins anew.
  void renewTime();

  Loop::Clock::time_point deadline() const { return mDeadline; }

  /// "within 3 s".
  std::string timeAsText() const;

 private:
  Device search();
  bool hasNewsWithin(Loop::Clock::duration aTime, std::vector<Device>& aDevices);

  Options const& mOptions;
  Identity mIdentity;
  Loop mLoop;
  Loop::Clock::time_point mDeadline;
  std::unique_ptr<Mailbox> mMailbox;
  Presence mPresence;
  std::unique_ptr<Phone> mPhone;
};

}  // namespace ZelvCtl
