#pragma once

#include "apps/zelvctl/AnswerPrinter.h"
#include "apps/zelvctl/Errand.h"
#include "apps/zelvctl/SeenIds.h"

namespace ZelvCtl {

/// Carries out "watch". run() throws std::runtime_error on what keeps it from that.
class WatchVerb {
 public:
  /// All arguments outlive the object.
  WatchVerb(Options const& aOptions, int aStopDescriptor, std::ostream& aOut);

  /// Prints the value of the path, and each new one, until the signal to stop.
  void run();

 private:
  void receive(std::string const& aMessage);
  bool mayFollow(Target const& aTarget);
  void sayGoodbye(Target const& aTarget);
  void follow(Target const& aTarget);
  void subscribe(Target const& aTarget);
  void unsubscribe(Target const& aTarget);
  bool subscribesAgain(Target const& aTarget);
  bool hasComeBack(Target const& aTarget);
  void checkOutput() const;

  std::string mUrl;
  std::string mId;
  bool mHasValue = false;
  bool mIsAway = false;
  unsigned mReturns = 0;
  SeenIds mSeen;
  Errand mErrand;
  AnswerPrinter mPrinter;
};

}  // namespace ZelvCtl
