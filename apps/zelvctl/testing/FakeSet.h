#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "apps/zelvctl/Delivery.h"
#include "apps/zelvctl/Loop.h"
#include "apps/zelvctl/Mailbox.h"
#include "apps/zelvctl/testing/LoopbackHome.h"

namespace ZelvCtl {

/// A set called "Kitchen" in a home on the loopback interface: answers the phone's Probe, takes
/// data and commands at one mailbox and input where the home is; assets are elsewhere. Every wait
/// is bounded to 20 seconds.
class FakeSet {
 public:
  /// Called on the set's thread with each message that comes.
  using Listener = std::function<void(std::string const& aMessage)>;

  /// @param aAssetsUrl  where it says that it has assets; empty for a set without any.
  explicit FakeSet(
      Listener aListener = [](std::string const&) {}, std::string aAssetsUrl = "")
      : mListener(std::move(aListener)),
        mAssetsUrl(std::move(aAssetsUrl)),
        mThread([this] { live(); }) {}
  FakeSet(FakeSet const&) = delete;
  FakeSet& operator=(FakeSet const&) = delete;
  ~FakeSet() {
    mEnd.ring();
    mThread.join();
  }

  static constexpr char const* Id = "0c9a1de2-7f45-4f0b-8a6d-2f1b3c4d5e6f";

  LoopbackHome& home() { return mHome; }

  std::string url() const { return "tcp://127.0.0.1:" + std::to_string(mMailbox.port()) + "/"; }

  /// Tells the phone that the set is there, under this identifier for the message.
  void announce(std::string const& aMessageId) {
    mHome.send("<Envelope><Header><SenderID>x</SenderID><MessageID>" + aMessageId +
               "</MessageID></Header><Body><Hello><Device ID='" + Id +
               "'><Name>Kitchen</Name><Model>M</Model><Type>TV</Type><Services>" +
               service("DataControl", url()) + service("CommandControl", url()) +
               service("InputControl", mHome.url()) +
               (mAssetsUrl.empty() ? "" : service("AssetManagement", mAssetsUrl)) +
               "</Services></Device></Hello></Body></Envelope>");
  }

  void sayBye(std::string const& aMessageId) {
    mHome.send("<Envelope><Header><MessageID>" + aMessageId +
               "</MessageID></Header><Body><Bye><Device ID='" + Id +
               "' /></Bye></Body></Envelope>");
  }

  /// Sends to the address in an element of a message. @return whether it was taken.
  static bool reply(std::string const& aMessage, std::string const& aElement,
                    std::string const& aText) {
    Zelv::Adapter::SendCancel cancel;
    return Delivery::send(Zelv::Infrastructure::URL(part(aMessage, aElement)), aText, cancel);
  }

  /// The text of the first element of this name.
  static std::string part(std::string const& aMessage, std::string const& aElement) {
    auto const begin = aMessage.find("<" + aElement + ">") + aElement.size() + 2;
    return aMessage.substr(begin, aMessage.find("</" + aElement + ">") - begin);
  }

  static std::string onData(std::string const& aId, std::string const& aValue) {
    return "<Envelope><Header><SenderID>" + std::string(Id) +
           "</SenderID></Header><Body><OnData><SubscriptionId>" + aId + "</SubscriptionId><Data>" +
           aValue + "</Data></OnData></Body></Envelope>";
  }

  /// What has come, once it is so many.
  std::vector<std::string> messages(std::size_t aCount) {
    std::unique_lock lock(mLock);
    mChange.wait_for(lock, std::chrono::seconds(20), [&] { return mMessages.size() >= aCount; });
    return mMessages;
  }

 private:
  static std::string service(std::string const& aName, std::string const& aUrl) {
    return "<Service><Name>" + aName + "</Name><URL>" + aUrl + "</URL></Service>";
  }

  void live() {
    if (mHome.receiveMessage().find("<Probe>") != std::string::npos) {
      announce("first");
    }
    mHome.receiveMessage();  // the phone's Hello
    mLoop.serve(mMailbox.descriptor(), [this] { mMailbox.serve(); });
    mLoop.run(Loop::Forever, [] { return false; });
  }

  void take(std::string const& aMessage) {
    {
      std::lock_guard const lock(mLock);
      mMessages.push_back(aMessage);
      mChange.notify_all();
    }
    mListener(aMessage);
  }

  Listener const mListener;
  std::string const mAssetsUrl;
  LoopbackHome mHome;
  Bell mEnd;
  Loop mLoop{mEnd.descriptor()};
  Mailbox mMailbox{0, [this](std::string const& aMessage) { take(aMessage); }};
  std::mutex mLock;
  std::condition_variable mChange;
  std::vector<std::string> mMessages;
  std::thread mThread;
};

}  // namespace ZelvCtl
