#pragma once

#include "apps/zelvctl/AnswerPrinter.h"
#include "apps/zelvctl/Answers.h"
#include "apps/zelvctl/CommandMessages.h"
#include "apps/zelvctl/Errand.h"
#include "apps/zelvctl/ReceivedMessage.h"
#include "apps/zelvctl/SeenIds.h"

namespace ZelvCtl {

/// Carries out "serve". run() throws std::runtime_error on what keeps it from that.
class ServeVerb {
 public:
  /// All arguments outlive the object.
  ServeVerb(Options const& aOptions, int aStopDescriptor, std::ostream& aOut);

  /// Stays as a phone that takes commands, prints and answers them until the signal to stop.
  void run();

 private:
  std::string open();
  void receive(std::string const& aMessage);
  void answer(ReceivedMessage& aMessage, std::string const& aCommand);

  SeenIds mSeen;
  Answers mAnswers;
  Errand mErrand;
  CommandMessages const mMessages;
  AnswerPrinter mPrinter;
};

}  // namespace ZelvCtl
