#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "zelv/Zelv.h"

namespace ZelvTv {

/// Sends return values to other devices on threads of its own: those for one address in their
/// order, those for others beside them. So a device that takes nothing, or an address that somebody
/// made up, holds up no command. MUST end before the library does.
class ReturnSender {
 public:
  /// How the sending is done; it may take seconds.
  struct Way {
    std::function<void(std::string const& aValue, Zelv::CommandArgs const& aArgs)> send =
        &Zelv::CommandReturn::sendReturn;
    /// Makes the sends under way return.
    std::function<void()> cancel = &Zelv::CommandReturn::cancel;
  };

  static constexpr std::size_t kThreads = 16;
  static constexpr std::size_t kMaximumAddresses = 256;
  static constexpr std::size_t kMaximumBytes = std::size_t{32} << 20U;

  ReturnSender() : ReturnSender(Way()) {}
  explicit ReturnSender(Way aWay) : mWay(std::move(aWay)) {}
  ReturnSender(ReturnSender const&) = delete;
  ReturnSender& operator=(ReturnSender const&) = delete;
  /// Gives up what has not gone out.
  ~ReturnSender();

  /// @return false, with nothing done, when too much is waiting.
  bool Send(std::string const& aValue, Zelv::CommandArgs const& aArgs);

 private:
  struct Return {
    std::string value;
    Zelv::CommandArgs args;
  };

  static std::size_t weightOf(Return const& aReturn);
  void startThread();
  void work();
  void sendFirstOf(std::string const& aAddress, std::unique_lock<std::mutex>& aLock);

  Way const mWay;
  std::mutex mMutex;
  std::condition_variable mWork;
  bool mEnded = false;
  /// By address. One that a thread is busy with stays, even if nothing waits for it.
  std::map<std::string, std::deque<Return>> mWaiting;
  std::size_t mBytes = 0;
  /// The addresses that no thread is busy with, in the order of their turns.
  std::deque<std::string> mReady;
  /// Started as they are needed, so a set that nobody commands has none.
  std::vector<std::thread> mThreads;
  /// How many of them wait for work.
  std::size_t mIdle = 0;
};

}  // namespace ZelvTv
