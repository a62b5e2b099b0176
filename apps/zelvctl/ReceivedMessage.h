#pragma once

#include <optional>
#include <string>

#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/infrastructure/URL.h"

namespace ZelvCtl {

/// Reads a message that has come over TCP. A part that is missing is empty, as is every part of a
/// text that is no message.
class ReceivedMessage {
 public:
  /// @param aText  outlives the object.
  explicit ReceivedMessage(std::string const& aText);

  /// The first element of the body.
  std::string type();

  std::string senderId();

  /// In their usual form; empty for what is no identifier.
  std::string messageId();
  std::string relatesTo();

  /// Whether the message says that it answers another, whichever.
  bool isAnswer();

  /// Where an answer may go: to one host, over TCP. Nothing for any other text.
  std::optional<Zelv::Infrastructure::URL> replyTo();

  /// Of "OnData".
  std::string subscriptionId();

  /// The value in "OnData", as applications of a set get it.
  std::string data();

  /// All that stands in the body, exactly as it was sent.
  std::string body() const;

 private:
  std::string read(std::string const& aXPath);

  std::string const& mText;
  Zelv::Infrastructure::HierarchicalDB mDocument;
};

}  // namespace ZelvCtl
