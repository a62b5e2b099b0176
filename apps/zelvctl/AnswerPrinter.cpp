#include "apps/zelvctl/AnswerPrinter.h"

#include <nlohmann/json.hpp>

#include "apps/zelvctl/PrintableText.h"

namespace ZelvCtl {

using nlohmann::json;

void AnswerPrinter::value(std::string const& aPath, std::string const& aValue) {
  if (mJson) {
    mOutput.print(json{{"path", aPath}, {"value", aValue}});
  } else {
    mOutput.print(PrintableText::block(aValue) + "\n");
  }
}

void AnswerPrinter::change(std::string const& aPath, std::string const& aValue) {
  if (mJson) {
    mOutput.print(json{{"path", aPath}, {"value", aValue}});
  } else {
    mOutput.print(PrintableText::line(aValue) + "\n");
  }
}

void AnswerPrinter::taken(std::string const& aPath) {
  if (mJson) {
    mOutput.print(json{{"path", aPath}, {"acknowledged", true}});
  }
}

void AnswerPrinter::sent(std::size_t aCount) {
  if (mJson) {
    mOutput.print(json{{"sent", aCount}});
  }
}

void AnswerPrinter::answer(std::string const& aSender, std::string const& aText) {
  if (mJson) {
    mOutput.print(json{{"sender", aSender}, {"value", aText}});
  } else {
    mOutput.print(PrintableText::block(aText) + "\n");
  }
}

void AnswerPrinter::ready(std::string const& aId, std::string const& aUrl) {
  if (mJson) {
    mOutput.print(json{{"event", "ready"}, {"id", aId}, {"url", aUrl}});
  } else {
    mOutput.print("ready " + PrintableText::field(aId) + " " + aUrl + "\n");
  }
}

void AnswerPrinter::command(std::string const& aSender, std::string const& aMessageId,
                            std::string const& aText) {
  if (mJson) {
    mOutput.print(
        json{{"event", "command"}, {"sender", aSender}, {"message", aMessageId}, {"text", aText}});
  } else {
    mOutput.print("command " + PrintableText::field(aSender) + " " + aMessageId + " " +
                  PrintableText::line(aText) + "\n");
  }
}

}  // namespace ZelvCtl
