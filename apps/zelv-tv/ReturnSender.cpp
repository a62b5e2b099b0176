#include "apps/zelv-tv/ReturnSender.h"

#include <exception>
#include <utility>

namespace ZelvTv {

ReturnSender::~ReturnSender() {
  {
    std::lock_guard const lock(mMutex);
    mEnded = true;
  }
  mWay.cancel();
  mWork.notify_all();
  for (std::thread& thread : mThreads) {
    thread.join();
  }
}

// Each weighs more than its text, so that short ones count too.
std::size_t ReturnSender::weightOf(Return const& aReturn) {
  return sizeof(Return) + aReturn.value.size() + aReturn.args.senderId.size() +
         aReturn.args.replyTo.size();
}

bool ReturnSender::Send(std::string const& aValue, Zelv::CommandArgs const& aArgs) {
  Return entry{aValue, aArgs};
  std::size_t const weight = weightOf(entry);
  std::lock_guard const lock(mMutex);
  bool const isNew = !mWaiting.contains(aArgs.replyTo);
  if (mBytes + weight > kMaximumBytes || (isNew && mWaiting.size() == kMaximumAddresses)) {
    return false;
  }
  mWaiting[aArgs.replyTo].push_back(std::move(entry));
  mBytes += weight;
  if (isNew) {
    mReady.push_back(aArgs.replyTo);
    startThread();
    mWork.notify_one();
  }
  return true;
}

void ReturnSender::startThread() {
  if (mReady.size() > mIdle && mThreads.size() < kThreads) {
    mThreads.emplace_back([this] { work(); });
  }
}

void ReturnSender::work() {
  std::unique_lock lock(mMutex);
  for (;;) {
    ++mIdle;
    mWork.wait(lock, [this] { return mEnded || !mReady.empty(); });
    --mIdle;
    if (mEnded) {
      return;
    }
    std::string const address = std::move(mReady.front());
    mReady.pop_front();
    sendFirstOf(address, lock);
  }
}

void ReturnSender::sendFirstOf(std::string const& aAddress, std::unique_lock<std::mutex>& aLock) {
  std::deque<Return>& waiting = mWaiting.at(aAddress);
  Return const entry = std::move(waiting.front());
  waiting.pop_front();
  mBytes -= weightOf(entry);
  aLock.unlock();
  try {
    mWay.send(entry.value, entry.args);
  } catch (std::exception const&) {
    // The library has looked at the address when the command came; there is nobody else to tell.
  }
  aLock.lock();
  if (waiting.empty()) {
    mWaiting.erase(aAddress);
  } else {
    mReady.push_back(aAddress);
    mWork.notify_one();
  }
}

}  // namespace ZelvTv
