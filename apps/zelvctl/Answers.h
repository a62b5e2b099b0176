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

#include "zelv/adapter/SendCancel.h"
#include "zelv/infrastructure/URL.h"

namespace ZelvCtl {

/// Sends answers on threads of its own: those to one address in their order, those to others beside
/// them, so that an address that never takes anything holds up nobody else.
class Answers {
 public:
  /// Sends one text. @return whether it was taken.
  using Sender = std::function<bool(Zelv::Infrastructure::URL const& aAddress,
                                    std::string const& aText, Zelv::Adapter::SendCancel& aCancel)>;

  static constexpr std::size_t Threads = 8;
  static constexpr std::size_t MaxAddresses = 64;
  static constexpr std::size_t MaxTexts = 10000;      ///< waiting for one address
  static constexpr std::size_t MaxBytes = 64U << 20;  ///< waiting in all

  explicit Answers(Sender aSender);
  Answers(Answers const&) = delete;
  Answers& operator=(Answers const&) = delete;

  /// Gives up what has not gone out.
  ~Answers();

  /// @return false, with nothing done, when too much is waiting.
  bool send(Zelv::Infrastructure::URL const& aAddress, std::string const& aText);

 private:
  struct Waiting {
    Zelv::Infrastructure::URL address;
    std::deque<std::string> texts;
  };

  void work();
  std::string takeFirst(Waiting& aWaiting);
  void giveUp(Waiting& aWaiting);
  void sendFirst(std::unique_lock<std::mutex>& aLock, std::string const& aKey);

  Sender const mSender;
  Zelv::Adapter::SendCancel mCancel;
  std::mutex mLock;
  std::condition_variable mWork;
  bool mEnd = false;
  std::size_t mBytes = 0;
  std::map<std::string, Waiting> mWaiting;
  /// The addresses that no thread is busy with.
  std::deque<std::string> mReady;
  std::vector<std::thread> mThreads;
};

}  // namespace ZelvCtl
