#include "tests/Answers.h"

#include <chrono>
#include <utility>

void Answers::onData(std::string const& aXPath, std::string const& aValue,
                     Zelv::ContextInformation const* aContext, Zelv::GUID const& aTransactionID) {
  put({aXPath, aValue, aContext, aTransactionID, false});
}

void Answers::onStatus(Zelv::StatusInformation const& aStatus, Zelv::GUID const& aTransactionID) {
  put({"", aStatus.getStatusText(), nullptr, aTransactionID, true});
}

void Answers::put(Answer aAnswer) {
  std::lock_guard const lock(mLock);
  mAnswers.push_back(std::move(aAnswer));
  mGrown.notify_all();
}

std::optional<Answers::Answer> Answers::next() {
  std::unique_lock lock(mLock);
  if (!mGrown.wait_for(lock, std::chrono::seconds(20), [this] { return !mAnswers.empty(); })) {
    return std::nullopt;
  }
  Answer answer = std::move(mAnswers.front());
  mAnswers.erase(mAnswers.begin());
  return answer;
}
