#pragma once

#include <optional>
#include <string>

#include "apps/zelvctl/AnswerPrinter.h"
#include "apps/zelvctl/Errand.h"

namespace ZelvCtl {

/// Carries out "get". run() throws std::runtime_error on what keeps it from that.
class GetVerb {
 public:
  /// All arguments outlive the object.
  GetVerb(Options const& aOptions, int aStopDescriptor, std::ostream& aOut);

  /// Prints the value of the path.
  void run();

 private:
  void receive(std::string const& aMessage);

  std::string mId;
  std::optional<std::string> mValue;
  Errand mErrand;
  AnswerPrinter mPrinter;
};

}  // namespace ZelvCtl
