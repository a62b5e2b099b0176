#include "apps/zelv-tv/SentCommands.h"

#include "apps/zelv-tv/ValueText.h"

namespace ZelvTv {

SentCommands::~SentCommands() {
  {
    std::lock_guard const lock(mMutex);
    while (!mWaiting.empty()) {
      setAside(mWaiting.front());
    }
  }
  discardDone();
}

// The lock is held over the call into the library, so that a return value waits until the
// identifier is noted. Callbacks of commands run under no lock of the library.
Zelv::GUID SentCommands::Send(std::string const& aCommand, std::string const& aDeviceId) {
  giveUpOldest();
  discardDone();
  std::lock_guard const lock(mMutex);
  Sent& sent = mWaiting.emplace_back(*this);
  sent.place = std::prev(mWaiting.end());
  try {
    sent.id = mQuestions.Ask([&] { return mCommands.executeCommand(aCommand, aDeviceId, &sent); });
  } catch (...) {
    setAside(sent);
    throw;
  }
  return sent.id;
}

void SentCommands::take(Sent& aSent, std::string const& aValue) {
  std::lock_guard const lock(mMutex);
  mEvents.Post("returned " + aSent.id.toString() + " " + ValueText::ToLine(aValue));
  mQuestions.Answered(aSent.id);
  setAside(aSent);
}

// A handler may answer more than once, so it may be aside already.
void SentCommands::setAside(Sent& aSent) {
  if (!aSent.aside) {
    aSent.aside = true;
    mDone.splice(mDone.end(), mWaiting, aSent.place);
  }
}

void SentCommands::giveUpOldest() {
  std::lock_guard const lock(mMutex);
  if (mWaiting.size() == kMaximumWaiting) {
    Sent& oldest = mWaiting.front();
    mEvents.Post("failed " + oldest.id.toString());
    mQuestions.Answered(oldest.id);
    setAside(oldest);
  }
}

// The lock is not held: the library waits for a callback that runs, and that takes it.
void SentCommands::discardDone() {
  std::list<Sent> done;
  {
    std::lock_guard const lock(mMutex);
    done.splice(done.end(), mDone);
  }
  for (Sent& sent : done) {
    mCommands.discardCommandCallback(&sent);
  }
}

}  // namespace ZelvTv
