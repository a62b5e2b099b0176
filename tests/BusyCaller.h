#pragma once

#include <atomic>
#include <mutex>
#include <set>
#include <string>

#include "zelv/Zelv.h"

/// A caller that uses every operation an application has, and whose callbacks call back in: they
/// read, subscribe and unsubscribe, execute a command, and make and destroy timers.
///
/// Its callbacks come from all threads of the library. Each of them calls back in at most once, and
/// not always, so that the work dies down by itself when nobody calls step() any more.
class BusyCaller : public virtual Zelv::IBaseDataCallback,
                   public virtual Zelv::IBaseTimerCallback,
                   public virtual Zelv::IBaseCommandCallback,
                   public virtual Zelv::IBaseUserCallback,
                   public virtual Zelv::IBaseCommandHandler {
 public:
  /// @param aName  the name of the commands that it handles.
  BusyCaller(Zelv::IBase& aSystem, std::string aName);

  /// One call from outside: each time another operation.
  void step();

  /// Ends all that would still call it. Afterwards the system may go on, and this object go once
  /// the data worker has come to the end of its tasks.
  void leave();

  /// Callbacks so far.
  std::size_t heard() const { return mHeard; }

  void onData(std::string const& aXPath, std::string const& aValue,
              Zelv::ContextInformation const* aContext, Zelv::GUID const& aTransactionID) override;
  void onStatus(Zelv::StatusInformation const& aStatus, Zelv::GUID const& aTransactionID) override;
  void onTimer(std::string const& aTimerName, Zelv::GUID aTimerID) override;
  void onReturn(std::string const& aValue, Zelv::GUID const& aCommandID) override;
  void onUserInput(std::string const& aType, std::string const& aValue, std::string const& aDevice,
                   std::string const& aUser, Zelv::GUID const& aSubscriptionID) override;
  std::string onCommand(std::string const& aCommand, Zelv::CommandArgs const& aArgs) override;

 private:
  void callBackIn();
  void call(unsigned aKind);
  void read(std::string const& aPath);
  void subscribeForAWhile();
  void makeTimer();
  void endOneTimer();
  void executeCommand();
  void changeHandler();
  void changeInput();
  void askEnvironment();

  Zelv::IAppData& mData;
  Zelv::IAppTimer& mTimers;
  Zelv::IAppCommand& mCommands;
  Zelv::IAppUser& mUsers;
  Zelv::IAppEnvironment& mEnvironment;
  std::string const mName;
  std::atomic<unsigned> mSteps{0};
  std::atomic<unsigned> mCallbacks{0};
  std::atomic<std::size_t> mHeard{0};
  std::mutex mMutex;
  std::set<Zelv::GUID> mTimerIds;
  Zelv::GUID mHandler;
  Zelv::GUID mInput;
};
