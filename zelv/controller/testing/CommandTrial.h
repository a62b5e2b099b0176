#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "zelv/adapter/NetworkAdapter.h"
#include "zelv/controller/CommandController.h"
#include "zelv/controller/testing/FakeCoreData.h"
#include "zelv/controller/testing/Phone.h"
#include "zelv/interfaces/ICoreTimer.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/Fakes.h"
#include "zelv/platform/fake/OwnNetwork.h"

namespace Zelv::Controller::Testing {

/// A tree that also takes subscriptions.
class CommandTree : public FakeCoreData {
 public:
  GUID subscribeData(std::string const& aXPath, ContextInformation const* aContext,
                     IBaseDataCallback* aCallback) override {
    return requestData(aXPath, aContext, aCallback);
  }

  /// The newest request of a path.
  Request of(std::string const& aPath) const {
    for (auto request = requests.rbegin(); request != requests.rend(); ++request) {
      if (request->path == aPath) {
        return *request;
      }
    }
    ADD_FAILURE() << "nobody asked for " << aPath;
    return {};
  }
};

class CommandTimer : public virtual ICoreTimer {
 public:
  CommandTimer() = default;
  CommandTimer(CommandTimer const&) = delete;
  CommandTimer& operator=(CommandTimer const&) = delete;

  GUID createTimer(unsigned int, int, std::string const&, IBaseTimerCallback*) override {
    return GUID::createGUID();
  }
  void destroyTimer(GUID const&, IBaseTimerCallback*) override {}
  void resetTimer(GUID const&, unsigned int, int) override {}
};

/// Calls that are inside an object of the test. Its end waits for them, since a test that has seen
/// all it wanted is done before the thread that showed it.
class CallsInside {
 public:
  class Call {
   public:
    explicit Call(CallsInside& aCalls) : mCalls(aCalls) { mCalls.change(1); }
    Call(Call const&) = delete;
    Call& operator=(Call const&) = delete;
    ~Call() { mCalls.change(-1); }

   private:
    CallsInside& mCalls;
  };

  CallsInside() = default;
  CallsInside(CallsInside const&) = delete;
  CallsInside& operator=(CallsInside const&) = delete;
  ~CallsInside() {
    std::unique_lock lock(mLock);
    EXPECT_TRUE(mChanged.wait_for(lock, std::chrono::seconds(60), [&] { return mCount == 0; }));
  }

 private:
  void change(int aBy) {
    std::lock_guard lock(mLock);
    mCount += aBy;
    mChanged.notify_all();
  }

  std::mutex mLock;
  std::condition_variable mChanged;
  int mCount = 0;
};

/// Notes what it is called with, and does what the test wants.
class CommandHandler : public virtual IBaseCommandHandler {
 public:
  struct Call {
    std::string command;
    CommandArgs args;
    std::thread::id thread;
  };
  using Action = std::function<std::string(std::string const&, CommandArgs const&)>;

  explicit CommandHandler(Action aAction = nullptr) : mAction(std::move(aAction)) {}

  std::string onCommand(std::string const& aCommand, CommandArgs const& aArgs) override {
    CallsInside::Call const call(mInside);
    {
      std::lock_guard lock(mLock);
      mCalls.push_back({aCommand, aArgs, std::this_thread::get_id()});
      mGrown.notify_all();
    }
    return mAction ? mAction(aCommand, aArgs) : "";
  }

  bool waitFor(std::size_t aCount) const {
    std::unique_lock lock(mLock);
    return mGrown.wait_for(lock, std::chrono::seconds(60), [&] { return mCalls.size() >= aCount; });
  }

  std::vector<Call> calls() const {
    std::lock_guard lock(mLock);
    return mCalls;
  }

 private:
  Action const mAction;
  mutable std::mutex mLock;
  mutable std::condition_variable mGrown;
  std::vector<Call> mCalls;
  CallsInside mInside;
};

class CommandCallback : public virtual IBaseCommandCallback {
 public:
  struct Return {
    std::string value;
    GUID id;
  };
  using Action = std::function<void(std::string const&)>;

  explicit CommandCallback(Action aAction = nullptr) : mAction(std::move(aAction)) {}

  void onStatus(StatusInformation const&, GUID const&) override {}
  void onReturn(std::string const& aValue, GUID const& aCommandID) override {
    CallsInside::Call const call(mInside);
    {
      std::lock_guard lock(mLock);
      mReturns.push_back({aValue, aCommandID});
      mGrown.notify_all();
    }
    if (mAction) {
      mAction(aValue);
    }
  }

  bool waitFor(std::size_t aCount) const {
    std::unique_lock lock(mLock);
    return mGrown.wait_for(lock, std::chrono::seconds(60),
                           [&] { return mReturns.size() >= aCount; });
  }

  std::vector<Return> returns() const {
    std::lock_guard lock(mLock);
    return mReturns;
  }

 private:
  Action const mAction;
  mutable std::mutex mLock;
  mutable std::condition_variable mGrown;
  std::vector<Return> mReturns;
  CallsInside mInside;
};

/// A command controller with a tree that answers when the test says so, on a network of its own.
class CommandTrial : public testing::Test {
 protected:
  static constexpr char const* cIdentityPath = "/Zelv/Devices/LocalTV/@ID";
  static constexpr char const* cAddressPath =
      "/Zelv/Devices/LocalTV/Interfaces/NetworkInterface/IPv4/Address/text()";
  static constexpr char const* cDevicesPath = "/Zelv/Devices/Mobile/@ID";
  static constexpr char const* cSelf = "6ba7b810-9dad-11d1-80b4-00c04fd430c8";
  static constexpr std::uint16_t cPort = 4448;

  CommandTrial() {
    Platform::Fake::ResetFakes();
    mAdapter.reset(Adapter::NetworkAdapter::getInstance());
    sTimer = &mTimer;
    sMakesQueues = true;
    mController = std::make_unique<CommandController>(
        CommandController::Surroundings{FakeCoreData::find, findTimer, makeQueue});
  }
  /// As the library ends it: the network before the controller.
  ~CommandTrial() override {
    end();
    sTimer = nullptr;
    Platform::Fake::ResetFakes();
  }

  void end() {
    if (mController) {
      mController->terminate();
    }
    mAdapter.reset();
    mController.reset();
  }

  /// Identity known, address known, service up.
  void start() {
    mController->initialize();
    answer(cIdentityPath, cSelf);
    answer(cAddressPath, "127.0.0.1");
  }

  void answer(std::string const& aPath, std::string const& aValue) const {
    mTree.answer(mTree.of(aPath), aValue);
  }

  static std::string urlPath(std::string const& aDevice) {
    return "/Zelv/Devices/Mobile[@ID='" + aDevice +
           "']/Services/Service[Name='CommandControl']/URL/text()";
  }

  /// Gives a command and answers the question for the device's address.
  GUID command(std::string const& aCommand, std::string const& aDevice, Phone const& aPhone) {
    GUID const id = mController->executeCommand(aCommand, aDevice, &mCallback);
    answer(urlPath(aDevice), aPhone.url());
    return id;
  }

  /// As a peer writes it; empty parts are left out.
  static std::string message(std::string const& aId, std::string const& aBody,
                             std::string const& aReplyTo = "", std::string const& aRelatesTo = "") {
    auto const element = [](std::string const& aName, std::string const& aValue) {
      return aValue.empty() ? "" : "<" + aName + ">" + aValue + "</" + aName + ">";
    };
    return "<Envelope><Header>" + element("MessageID", aId) + "<SenderID>phone</SenderID>" +
           element("ReplyTo", aReplyTo) + element("RelatesTo", aRelatesTo) + "</Header><Body>" +
           aBody + "</Body></Envelope>";
  }

  static std::string newId() { return GUID::createGUID().toString(); }

  /// A message as the network hands it over.
  void receive(std::string const& aMessage) const {
    mController->onMessage(aMessage + "\n", aMessage + "\n");
  }

  /// A message over the wire; true when it was acknowledged.
  static bool send(std::string const& aMessage) {
    Zelv::Testing::Peer peer = Zelv::Testing::Peer::connectedTo(cPort);
    return peer.send(aMessage + "\n") && peer.receiveAll() == "\n";
  }

  /// Until all that was queued for the controller's thread is done.
  void settle() {
    CommandHandler last;
    GUID const handle = mController->registerCommandHandler("Last", &last);
    mController->executeCommand("<Last>", "", &mSettled);
    EXPECT_TRUE(last.waitFor(1));
    mController->unregisterCommandHandler(handle);
  }

  Platform::Fake::OwnNetwork mNetwork;
  CommandTree mTree;
  CommandTimer mTimer;
  CommandCallback mCallback;
  std::unique_ptr<Adapter::NetworkAdapter> mAdapter;
  std::unique_ptr<CommandController> mController;

  static inline ICoreTimer* sTimer = nullptr;
  static inline bool sMakesQueues = true;

 private:
  static ICoreTimer* findTimer() { return sTimer; }
  static std::unique_ptr<DeviceServiceQueue> makeQueue() {
    return sMakesQueues ? std::make_unique<DeviceServiceQueue>() : nullptr;
  }

  CommandCallback mSettled;
};

}  // namespace Zelv::Controller::Testing
