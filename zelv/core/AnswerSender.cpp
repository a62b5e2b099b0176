#include "zelv/core/AnswerSender.h"

#include <exception>
#include <utility>

#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/TCAutoLock.h"

namespace Zelv {

AnswerSender::AnswerSender(Send aSend) : mSend(std::move(aSend)) {
  mOffered.Create(0);
}

AnswerSender::~AnswerSender() {
  end();
  mOffered.Destroy();
}

void AnswerSender::begin() {
  TCAutoLock lock(mLock);
  mTaking = true;
}

bool AnswerSender::offer(OutgoingMessage aAnswer) {
  {
    TCAutoLock lock(mLock);
    if (mTaking && mWaiting.size() < MaxWaiting && isRunning()) {
      mWaiting.push_back(std::move(aAnswer));
      mOffered.Give();
      return true;
    }
  }
  PCRealDebug::Print(PCRealDebug::Warning, "AnswerSender::offer: Answer to '%s' is dropped.",
                     aAnswer.mUrl.toString().c_str());
  return false;
}

bool AnswerSender::isRunning() {
  if (!mStarted) {
    mStarted = Create("Quorl - AnswerSender", 4096) != 0;
  }
  return mStarted;
}

void AnswerSender::end() {
  std::size_t dropped = 0;
  {
    TCAutoLock lock(mLock);
    mTaking = false;
    dropped = mWaiting.size();
    mWaiting.clear();
  }
  if (dropped != 0) {
    PCRealDebug::Print(PCRealDebug::Notable, "AnswerSender::end: %zu answers are dropped.",
                       dropped);
  }
  mOffered.Give();
  Destroy();
  TCAutoLock lock(mLock);
  mStarted = false;
}

void AnswerSender::t_Main() {
  for (std::optional<OutgoingMessage> answer = take(); answer; answer = take()) {
    send(*answer);
  }
}

void AnswerSender::send(OutgoingMessage const& aAnswer) const {
  try {
    mSend(aAnswer);
  } catch (std::exception const& error) {
    PCRealDebug::Print(PCRealDebug::Error, "AnswerSender::send: Answer lost, exception: %s",
                       error.what());
  } catch (...) {
    PCRealDebug::Print(PCRealDebug::Error, "AnswerSender::send: Answer lost, unknown exception.");
  }
}

// The count of the semaphore may be ahead of what waits, since end() drops answers: the list
// decides.
std::optional<OutgoingMessage> AnswerSender::take() {
  for (;;) {
    mOffered.Take();
    TCAutoLock lock(mLock);
    if (!mTaking) {
      return {};
    }
    if (!mWaiting.empty()) {
      OutgoingMessage answer = std::move(mWaiting.front());
      mWaiting.pop_front();
      return answer;
    }
  }
}

}  // namespace Zelv
