#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <optional>

#include "zelv/core/OutgoingMessage.h"
#include "zelv/platform/PCMutex.h"
#include "zelv/platform/PCSemaphore.h"
#include "zelv/platform/PCThread.h"

namespace Zelv {

/// Sends the answers that may take long, one after the other, on a thread that nobody waits for.
///
/// Who asks may name any address to be answered at, and one where nobody is holds up a sender over
/// TCP for seconds; the listener, with the other devices' messages behind it, must not be held up
/// for it. The thread starts with the first answer.
class AnswerSender : public virtual PCThread {
 public:
  /// Most answers that wait. More are dropped: peers ask again.
  static constexpr std::size_t MaxWaiting = 64;

  using Send = std::function<void(OutgoingMessage const&)>;

  /// @param aSend  called on the thread. What it throws is logged.
  explicit AnswerSender(Send aSend);
  AnswerSender(AnswerSender const&) = delete;
  AnswerSender& operator=(AnswerSender const&) = delete;
  ~AnswerSender() override;

  /// From here on answers are taken. Does nothing when they are.
  void begin();

  /// Hands over an answer. @return false when it is dropped.
  bool offer(OutgoingMessage aAnswer);

  /// Takes no more, drops those that wait, and waits for the one that is being sent. Does nothing
  /// when that is done. MUST NOT be called while a lock is held that the sending takes.
  void end();

 protected:
  void t_Main() override;

 private:
  void send(OutgoingMessage const& aAnswer) const;
  /// Waits for the next one; none at the end.
  std::optional<OutgoingMessage> take();
  bool isRunning() ZELV_REQUIRES(mLock);

  Send const mSend;
  PCMutex mLock;
  PCSemaphore mOffered;
  std::deque<OutgoingMessage> mWaiting ZELV_GUARDED_BY(mLock);
  bool mTaking ZELV_GUARDED_BY(mLock) = false;
  bool mStarted ZELV_GUARDED_BY(mLock) = false;
};

}  // namespace Zelv
