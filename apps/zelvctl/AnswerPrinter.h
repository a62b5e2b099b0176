#pragma once

#include <cstddef>
#include <ostream>
#include <string>

#include "apps/zelvctl/Output.h"

namespace ZelvCtl {

/// Prints what devices answer: text for people, JSON for programs, an object a line.
class AnswerPrinter {
 public:
  /// @param aOut  outlives the object.
  AnswerPrinter(std::ostream& aOut, bool aJson) : mOutput(aOut), mJson(aJson) {}

  /// As text the value as it is, on as many lines as it has.
  void value(std::string const& aPath, std::string const& aValue);

  /// As text the value on one line.
  void change(std::string const& aPath, std::string const& aValue);

  /// A new value has been taken; only in JSON, since the exit status says the same.
  void taken(std::string const& aPath);

  /// So many events have gone out; only in JSON.
  void sent(std::size_t aCount);

  /// The answer to a command, as value().
  void answer(std::string const& aSender, std::string const& aText);

  /// This phone takes commands now.
  void ready(std::string const& aId, std::string const& aUrl);

  /// A command has come.
  void command(std::string const& aSender, std::string const& aMessageId, std::string const& aText);

  bool isBroken() const { return mOutput.isBroken(); }

 private:
  Output mOutput;
  bool const mJson;
};

}  // namespace ZelvCtl
