#include "tests/BusyCaller.h"

#include <stdexcept>
#include <utility>

namespace {

constexpr unsigned cKinds = 12;
constexpr std::size_t cMaxTimers = 16;

std::string const cNamePath = "/Zelv/Applications/ActiveApplication/Name/text()";

template <class Interface>
Interface& find(Zelv::IBase& aSystem) {
  return dynamic_cast<Interface&>(aSystem);
}

}  // namespace

BusyCaller::BusyCaller(Zelv::IBase& aSystem, std::string aName)
    : mData(find<Zelv::IAppData>(aSystem)),
      mTimers(find<Zelv::IAppTimer>(aSystem)),
      mCommands(find<Zelv::IAppCommand>(aSystem)),
      mUsers(find<Zelv::IAppUser>(aSystem)),
      mEnvironment(find<Zelv::IAppEnvironment>(aSystem)),
      mName(std::move(aName)) {
  mHandler = mCommands.registerCommandHandler(mName, this);
  mInput = mUsers.subscribeUser("Key", this);
}

void BusyCaller::step() {
  call(mSteps++);
}

void BusyCaller::call(unsigned aKind) {
  switch (aKind % cKinds) {
    case 0:
      read(cNamePath);
      break;
    case 1:
      subscribeForAWhile();
      break;
    case 2:
      executeCommand();
      break;
    case 3:
      makeTimer();
      break;
    case 4:
      mData.setData(cNamePath, mName + std::to_string(aKind), this, true);
      break;
    case 5:
      read("/Zelv/Devices/LocalTV/Name/text()");
      break;
    case 6:
      endOneTimer();
      break;
    case 7:
      read("/Zelv[@DeviceId='6ba7b811-9dad-11d1-80b4-00c04fd430c8']/Devices/LocalTV/Name/text()");
      break;
    case 8:
      changeHandler();
      break;
    case 9:
      changeInput();
      break;
    case 10:
      askEnvironment();
      break;
    default:
      read("/Zelv/Users/User/@ID");
      break;
  }
}

void BusyCaller::callBackIn() {
  ++mHeard;
  // Half as many calls as callbacks at most, or the work would never die down.
  switch (mCallbacks++ % 12) {
    case 0:
      read(cNamePath);
      break;
    case 3:
      subscribeForAWhile();
      break;
    case 6:
      executeCommand();
      break;
    case 9:
      makeTimer();
      endOneTimer();
      break;
    default:
      break;
  }
}

void BusyCaller::read(std::string const& aPath) {
  mData.requestData(aPath, nullptr, this);
}

void BusyCaller::subscribeForAWhile() {
  mData.unsubscribeData(mData.subscribeData(cNamePath, nullptr, this));
}

void BusyCaller::makeTimer() {
  {
    std::lock_guard const lock(mMutex);
    if (mTimerIds.size() >= cMaxTimers) {
      return;
    }
  }
  // The own lock is not held while the library is called: its callbacks take it.
  Zelv::GUID const id = mTimers.createTimer(1, 3, mName, this);
  std::lock_guard const lock(mMutex);
  mTimerIds.insert(id);
}

void BusyCaller::endOneTimer() {
  Zelv::GUID id;
  {
    std::lock_guard const lock(mMutex);
    if (mTimerIds.empty()) {
      return;
    }
    id = *mTimerIds.begin();
    mTimerIds.erase(mTimerIds.begin());
  }
  mTimers.resetTimer(id, 2, 1);
  mTimers.destroyTimer(id, nullptr);
}

void BusyCaller::executeCommand() {
  mCommands.executeCommand("<" + mName + ">work</" + mName + ">", "", this);
}

void BusyCaller::changeHandler() {
  mCommands.unregisterCommandHandler(mHandler);
  mHandler = mCommands.registerCommandHandler(mName, this);
}

void BusyCaller::changeInput() {
  mUsers.unsubscribeUser(mInput);
  mInput = mUsers.subscribeUser("Key", this);
}

void BusyCaller::askEnvironment() {
  static_cast<void>(mEnvironment.getRegisteredComponents());
  static_cast<void>(mEnvironment.getComponent("MultiDevice"));
}

void BusyCaller::leave() {
  mCommands.discardCommandCallback(this);
  mCommands.unregisterCommandHandler(mHandler);
  mUsers.unsubscribeUser(mInput);
  for (bool more = true; more;) {
    endOneTimer();
    std::lock_guard const lock(mMutex);
    more = !mTimerIds.empty();
  }
}

void BusyCaller::onData(std::string const&, std::string const&, Zelv::ContextInformation const*,
                        Zelv::GUID const&) {
  callBackIn();
}

void BusyCaller::onStatus(Zelv::StatusInformation const&, Zelv::GUID const&) {
  callBackIn();
}

void BusyCaller::onTimer(std::string const&, Zelv::GUID) {
  callBackIn();
}

void BusyCaller::onReturn(std::string const&, Zelv::GUID const&) {
  callBackIn();
}

void BusyCaller::onUserInput(std::string const&, std::string const&, std::string const&,
                             std::string const&, Zelv::GUID const&) {
  callBackIn();
}

std::string BusyCaller::onCommand(std::string const& aCommand, Zelv::CommandArgs const&) {
  callBackIn();
  return aCommand;
}
