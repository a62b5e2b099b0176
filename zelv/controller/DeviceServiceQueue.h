#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

#include "zelv/adapter/NetworkAdapter.h"
#include "zelv/adapter/SendCancel.h"
#include "zelv/infrastructure/URL.h"
#include "zelv/platform/PCMutex.h"
#include "zelv/platform/PCSemaphore.h"
#include "zelv/platform/PCThread.h"

namespace Zelv::Controller {

/// The outgoing side of one service of one remote device: a thread, and the finished texts that it
/// sends one after the other. It keeps callers from waiting for the network, and texts to one
/// service in order; what the texts mean it does not know.
///
/// A text is tried three times and then given up without a word. Any number of threads may post;
/// nothing is locked while a text is being sent.
///
/// The owner calls terminate() and hands the queue to a QueueReaper, or deletes it where waiting
/// for its thread does no harm.
class DeviceServiceQueue : public virtual PCThread {
 public:
  /// Texts that wait, and their bytes. Beyond either the oldest are dropped, with a line in the
  /// log; the newest one always stays. A device that takes nothing for so long has lost them
  /// anyway. One that takes its texts may well have thousands given at once, and must get all.
  static constexpr std::size_t MaxTexts = 16384;
  static constexpr std::size_t MaxBytes = std::size_t{4} * 1024 * 1024;

  static constexpr int MaxAttempts = 3;

  /// For diagnostics; each value is right by itself.
  struct Counters {
    std::size_t length = 0;      ///< texts that wait, without the one being sent
    std::size_t bytes = 0;       ///< of these
    std::uint64_t attempts = 0;  ///< of sending
    std::uint64_t sent = 0;      ///< texts that arrived
    std::uint64_t dropped =
        0;  ///< texts given up: too many, too often tried, or not sent at the end
  };

  DeviceServiceQueue();

  /// Waits for the thread; see terminate() for how long that may take.
  ~DeviceServiceQueue() override;
  void t_Main() override;

  /// Starts the thread, which is idle until the first text. To be called once, before all else.
  ///
  /// @param aDeviceID  for the owner's information; may be empty.
  /// @return false when there is no thread to be had.
  bool initialize(Infrastructure::URL aURL, std::string const& aDeviceID);

  /// Appends a text. False for an empty one. After terminate() it is dropped, as those are that
  /// wait then.
  bool postCommand(std::string const& aMessage);

  /// Takes the first text; empty if there is none.
  std::string dequeueCommand();

  /// The thread's loop.
  void processCommandQueue();

  /// Ends the thread without waiting for it. No text is sent any more; a send under way ends at
  /// once. Always true. May be called repeatedly, from any thread and under any lock.
  bool terminate();

  bool isTerminated() const { return mTerminate; }

  /// The three below are constant once initialize() has returned.
  Infrastructure::URL const& getServiceURL() const { return mServiceURL; }
  std::string const& getDeviceID() const { return mDeviceID; }
  /// For log lines; -1 until initialize() was called.
  int getThreadID() const { return mThreadID; }

  Counters getCounters() const;

  /// When a text was last posted or its sending ended, in milliseconds of the monotonic clock.
  std::int64_t getLastActivity() const { return mLastActivity; }

 private:
  void send(std::string const& aText);
  bool attempt(std::string const& aText, int aCount);
  std::size_t makeRoomFor(std::size_t aBytes) ZELV_REQUIRES(mLock);
  void noteLength() ZELV_REQUIRES(mLock);

  Infrastructure::URL mServiceURL;
  std::deque<std::string> mTexts ZELV_GUARDED_BY(mLock);
  std::string mDeviceID;
  Adapter::NetworkAdapter* mNetworkAdapter = nullptr;
  PCMutex mLock;
  /// One count for each text, and one for termination.
  PCSemaphore mSemaphore;
  std::atomic<bool> mTerminate{false};
  int mThreadID = -1;

  Adapter::SendCancel mCancel;
  std::size_t mWaitingBytes ZELV_GUARDED_BY(mLock) = 0;
  std::atomic<std::size_t> mLength{0};
  std::atomic<std::size_t> mBytes{0};
  std::atomic<std::uint64_t> mAttempts{0};
  std::atomic<std::uint64_t> mSent{0};
  std::atomic<std::uint64_t> mDropped{0};
  std::atomic<std::int64_t> mLastActivity;
};

}  // namespace Zelv::Controller
