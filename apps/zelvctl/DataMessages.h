#pragma once

#include <string>

namespace ZelvCtl {

/// Writes the messages by which a device's tree is read, watched and written from elsewhere.
class DataMessages {
 public:
  /// @param aSenderId  who this phone is.
  /// @param aUrl       where its mailbox is; empty when only writing.
  DataMessages(std::string const& aSenderId, std::string const& aUrl)
      : mSenderId(aSenderId), mUrl(aUrl) {}

  /// Asks for the value of a path once. @param aId  comes back with the answer.
  std::string request(std::string const& aId, std::string const& aXPath) const;

  /// Asks for it now and at every change.
  std::string subscribe(std::string const& aId, std::string const& aXPath) const;
  std::string unsubscribe(std::string const& aId) const;

  /// @param aValue  goes out as it stands: a value may be XML.
  std::string set(std::string const& aXPath, std::string const& aValue) const;

 private:
  std::string envelope(std::string const& aHeaderRest, std::string const& aBody) const;
  std::string from() const;

  std::string const mSenderId;
  std::string const mUrl;
};

}  // namespace ZelvCtl
