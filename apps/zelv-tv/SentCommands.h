#pragma once

#include <cstddef>
#include <list>
#include <mutex>
#include <string>

#include "apps/zelv-tv/EventQueue.h"
#include "apps/zelv-tv/OpenQuestions.h"
#include "zelv/Zelv.h"

namespace ZelvTv {

/// Sends commands and tells of what they return: "returned ID VALUE".
///
/// Each command has a callback of its own. The identifier that comes with the return value of
/// another device is not the one of the command, so nothing else tells which one it belongs to.
class SentCommands {
 public:
  /// So many commands are waited for; one more, and the oldest is given up: "failed ID".
  static constexpr std::size_t kMaximumWaiting = 65536;

  /// All arguments outlive the object.
  SentCommands(EventQueue& aEvents, OpenQuestions& aQuestions, Zelv::IAppCommand& aCommands)
      : mEvents(aEvents), mQuestions(aQuestions), mCommands(aCommands) {}
  SentCommands(SentCommands const&) = delete;
  SentCommands& operator=(SentCommands const&) = delete;
  /// Nothing is told any more of what still comes.
  ~SentCommands();

  /// @param aDeviceId  empty for this device.
  /// @return the command's identifier. Passes on what the library throws.
  Zelv::GUID Send(std::string const& aCommand, std::string const& aDeviceId);

 private:
  class Sent : public virtual Zelv::IBaseCommandCallback {
   public:
    explicit Sent(SentCommands& aOwner) : mOwner(aOwner) {}

    void onReturn(std::string const& aValue, Zelv::GUID const& /*aCommandID*/) override {
      mOwner.take(*this, aValue);
    }
    void onStatus(Zelv::StatusInformation const& /*aStatus*/,
                  Zelv::GUID const& /*aTransactionID*/) override {}

    Zelv::GUID id;
    std::list<Sent>::iterator place;
    /// It is among those that are done.
    bool aside = false;

   private:
    SentCommands& mOwner;
  };

  void take(Sent& aSent, std::string const& aValue);
  void setAside(Sent& aSent);
  void giveUpOldest();
  void discardDone();

  EventQueue& mEvents;
  OpenQuestions& mQuestions;
  Zelv::IAppCommand& mCommands;
  std::mutex mMutex;
  /// In the order in which they were sent.
  std::list<Sent> mWaiting;
  /// No longer waited for; the library may still know their callbacks.
  std::list<Sent> mDone;
};

}  // namespace ZelvTv
