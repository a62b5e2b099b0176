#include "apps/zelvctl/WatchVerb.h"

#include <iostream>
#include <stdexcept>
#include <utility>

#include "apps/zelvctl/DataMessages.h"
#include "apps/zelvctl/Identifier.h"
#include "apps/zelvctl/Interrupted.h"
#include "apps/zelvctl/PrintableText.h"
#include "apps/zelvctl/ReceivedMessage.h"

namespace ZelvCtl {

namespace {

/// A set that starts is heard before all of its services stand.
constexpr std::chrono::seconds pauseBeforeNextTry{1};

/// Not an end, so on the other stream.
void note(std::string const& aText) {
  std::cerr << "zelvctl: " << PrintableText::masked(aText) << std::endl;
}

}  // namespace

WatchVerb::WatchVerb(Options const& aOptions, int aStopDescriptor, std::ostream& aOut)
    : mErrand(aOptions, aStopDescriptor), mPrinter(aOut, aOptions.json) {}

void WatchVerb::receive(std::string const& aMessage) {
  ReceivedMessage message(aMessage);
  // A message whose confirmation was lost comes again.
  if (message.type() == "OnData" && message.subscriptionId() == mId &&
      !mSeen.check(message.messageId())) {
    mHasValue = true;
    mPrinter.change(mErrand.options().path, message.data());
  }
}

// A subscription lasts as long as the set takes this phone for present.
void WatchVerb::run() {
  mUrl = mErrand.openMailbox(0, [this](std::string const& aMessage) { receive(aMessage); });
  mErrand.join();
  Target const target = mErrand.find(Service::data());
  mErrand.presence().follow(target.id, target.url.getDomainName());
  try {
    subscribe(target);
    if (mayFollow(target)) {
      follow(target);
    }
  } catch (Interrupted const&) {
    // the set may have got it all the same
  }
  mErrand.loop().ignoreStop();
  if (!mErrand.presence().isAway()) {
    sayGoodbye(target);
  }
}

/// Waits for the first value. @return false when the signal has come.
bool WatchVerb::mayFollow(Target const& aTarget) {
  Loop::End const end =
      mErrand.loop().run(mErrand.deadline(), [this] { return mHasValue || mPrinter.isBroken(); });
  if (end == Loop::TimeOver) {
    note("'" + aTarget.name + "' gave no value of " + mErrand.options().path + " " +
         mErrand.timeAsText() + "; waiting for one");
  }
  return end != Loop::Stopped;
}

void WatchVerb::sayGoodbye(Target const& aTarget) {
  try {
    mErrand.renewTime();
    unsubscribe(aTarget);
  } catch (std::runtime_error const&) {
    // the set forgets the subscription with the phone
  }
}

void WatchVerb::checkOutput() const {
  if (mPrinter.isBroken()) {
    throw std::runtime_error("cannot write to standard output");
  }
}

void WatchVerb::follow(Target const& aTarget) {
  bool mustSubscribe = false;
  for (;;) {
    auto const until = mustSubscribe ? Loop::Clock::now() + pauseBeforeNextTry : Loop::Forever;
    Loop::End const end = mErrand.loop().run(
        until, [&] { return mPrinter.isBroken() || (!mustSubscribe && hasComeBack(aTarget)); });
    if (end == Loop::Stopped) {
      return;
    }
    checkOutput();
    mustSubscribe = !subscribesAgain(aTarget);
  }
}

bool WatchVerb::hasComeBack(Target const& aTarget) {
  Presence const& presence = mErrand.presence();
  bool const wasAway = std::exchange(mIsAway, presence.isAway());
  if (mIsAway && !wasAway) {
    note("'" + aTarget.name + "' has left; waiting for it");
  }
  return std::exchange(mReturns, presence.returns()) != mReturns;
}

bool WatchVerb::subscribesAgain(Target const& aTarget) {
  try {
    mErrand.renewTime();
    unsubscribe(aTarget);  // it may have been silent only, and still know the one before
    subscribe(aTarget);
    return true;
  } catch (std::runtime_error const&) {
    return false;
  }
}

void WatchVerb::subscribe(Target const& aTarget) {
  mId = Identifier::create();
  mErrand.deliver(aTarget,
                  DataMessages(mErrand.identity().id, mUrl).subscribe(mId, mErrand.options().path));
}

void WatchVerb::unsubscribe(Target const& aTarget) {
  mErrand.deliver(aTarget, DataMessages(mErrand.identity().id, mUrl).unsubscribe(mId));
}

}  // namespace ZelvCtl
