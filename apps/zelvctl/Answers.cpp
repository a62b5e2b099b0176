#include "apps/zelvctl/Answers.h"

#include <utility>

namespace ZelvCtl {

using Zelv::Infrastructure::URL;

Answers::Answers(Sender aSender) : mSender(std::move(aSender)) {
  for (std::size_t count = 0; count < Threads; ++count) {
    mThreads.emplace_back([this] { work(); });
  }
}

Answers::~Answers() {
  {
    std::lock_guard const lock(mLock);
    mEnd = true;
  }
  mCancel.cancel();
  mWork.notify_all();
  for (std::thread& thread : mThreads) {
    thread.join();
  }
}

bool Answers::send(URL const& aAddress, std::string const& aText) {
  std::string const key = aAddress.toString();
  std::lock_guard const lock(mLock);
  if (mBytes + aText.size() > MaxBytes) {
    return false;
  }
  auto entry = mWaiting.find(key);
  if (entry == mWaiting.end()) {
    if (mWaiting.size() >= MaxAddresses) {
      return false;
    }
    entry = mWaiting.emplace(key, Waiting{aAddress, {}}).first;
    mReady.push_back(key);
    mWork.notify_one();
  }
  if (entry->second.texts.size() >= MaxTexts) {
    return false;
  }
  entry->second.texts.push_back(aText);
  mBytes += aText.size();
  return true;
}

void Answers::work() {
  std::unique_lock lock(mLock);
  for (;;) {
    mWork.wait(lock, [this] { return mEnd || !mReady.empty(); });
    if (mEnd) {
      return;
    }
    std::string const key = std::move(mReady.front());
    mReady.pop_front();
    sendFirst(lock, key);
  }
}

std::string Answers::takeFirst(Waiting& aWaiting) {
  std::string text = std::move(aWaiting.texts.front());
  aWaiting.texts.pop_front();
  mBytes -= text.size();
  return text;
}

// Whoever does not take one does not take the next, and each costs seconds.
void Answers::giveUp(Waiting& aWaiting) {
  while (!aWaiting.texts.empty()) {
    takeFirst(aWaiting);
  }
}

void Answers::sendFirst(std::unique_lock<std::mutex>& aLock, std::string const& aKey) {
  Waiting& waiting = mWaiting.at(aKey);
  URL const address = waiting.address;
  std::string const text = takeFirst(waiting);
  aLock.unlock();
  bool const taken = mSender(address, text, mCancel);
  aLock.lock();
  if (!taken) {
    giveUp(waiting);
  }
  if (waiting.texts.empty()) {
    mWaiting.erase(aKey);
  } else {
    mReady.push_back(aKey);
    mWork.notify_one();
  }
}

}  // namespace ZelvCtl
