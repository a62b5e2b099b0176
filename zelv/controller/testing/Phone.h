#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <list>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "zelv/adapter/testing/Peer.h"

namespace Zelv::Controller::Testing {

/// A device on the loopback interface that takes one text a connection and acknowledges it; on
/// plain sockets.
class Phone {
 public:
  /// What it does with a connection.
  enum Manner {
    Acknowledges,
    AcknowledgesWrongly,
    HangsUp,     ///< reads the text, then closes
    KeepsSilent  ///< reads the text, and keeps the connection until goOn() or its end
  };

  explicit Phone(Manner aManner = Acknowledges)
      : Phone(aManner, Zelv::Testing::Peer::freePort(Zelv::Testing::Peer::Stream)) {}

  Phone(Manner aManner, std::uint16_t aPort)
      : mPort(aPort), mManner(aManner), mListener(Zelv::Testing::Peer::Stream) {
    mListens = mListener.listen(mPort, 512);
    mThread = std::thread([this] { serve(); });
  }
  Phone(Phone const&) = delete;
  Phone& operator=(Phone const&) = delete;
  ~Phone() { leave(); }

  bool listens() const { return mListens; }
  std::uint16_t port() const { return mPort; }
  std::string url() const { return "tcp://127.0.0.1:" + std::to_string(mPort) + "/"; }

  /// From now on nobody listens at the port.
  void leave() {
    if (!mThread.joinable()) {
      return;
    }
    {
      std::lock_guard lock(mLock);
      mLeaving = true;
    }
    Zelv::Testing::Peer(Zelv::Testing::Peer::Stream).connect(mPort);
    mThread.join();
    mKept.clear();
    mListener.close();
  }

  /// A silent one acknowledges what it has kept, and all that comes.
  void goOn() {
    std::lock_guard lock(mLock);
    mManner = Acknowledges;
    for (Zelv::Testing::Peer& peer : mKept) {
      peer.send("\n");
    }
    mKept.clear();
  }

  /// Waits until aCount texts have come. @return false when they did not come in a time that
  /// nothing healthy needs.
  bool waitFor(std::size_t aCount) const {
    std::unique_lock lock(mLock);
    return mGrown.wait_for(lock, std::chrono::seconds(60), [&] { return mTexts.size() >= aCount; });
  }

  /// The texts, with their line feed, in the order of coming.
  std::vector<std::string> texts() const {
    std::lock_guard lock(mLock);
    return mTexts;
  }

 private:
  void serve() {
    for (;;) {
      Zelv::Testing::Peer peer = mListener.accept();
      {
        std::lock_guard lock(mLock);
        if (mLeaving) {
          return;
        }
      }
      take(std::move(peer));
    }
  }

  void take(Zelv::Testing::Peer aPeer) {
    std::string text;
    while (text.empty() || text.back() != '\n') {
      std::string const piece = aPeer.receive();
      if (piece.empty()) {
        return;
      }
      text += piece;
    }
    std::lock_guard lock(mLock);
    mTexts.push_back(text);
    if (mManner == KeepsSilent) {
      mKept.push_back(std::move(aPeer));
    } else if (mManner != HangsUp) {
      aPeer.send(mManner == Acknowledges ? "\n" : "no");
    }
    mGrown.notify_all();
  }

  std::uint16_t const mPort;
  Manner mManner;
  Zelv::Testing::Peer mListener;
  bool mListens = false;
  bool mLeaving = false;
  mutable std::mutex mLock;
  mutable std::condition_variable mGrown;
  std::vector<std::string> mTexts;
  std::list<Zelv::Testing::Peer> mKept;
  std::thread mThread;
};

}  // namespace Zelv::Controller::Testing
