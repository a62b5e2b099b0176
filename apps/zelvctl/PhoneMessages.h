#pragma once

#include <string>

namespace ZelvCtl {

/// What this phone tells of itself.
struct Identity {
  std::string id;
  std::string name;
  std::string address;
  std::string port;
  std::string commandUrl{};  ///< where it takes commands; empty when it takes none
};

/// Writes the messages of discovery as a phone sends them.
class PhoneMessages {
 public:
  explicit PhoneMessages(Identity const& aIdentity) : mIdentity(aIdentity) {}

  std::string probe() const;
  std::string hello() const;
  std::string heartBeat() const;
  std::string bye() const;
  std::string resolve(std::string const& aDeviceId) const;
  std::string probeMatch(std::string const& aRelatesTo) const;
  std::string resolveMatch(std::string const& aRelatesTo) const;

 private:
  std::string envelope(std::string const& aHeaderRest, std::string const& aBody) const;
  std::string device() const;
  std::string services() const;
  std::string replyTo() const;
  std::string from() const;

  Identity const& mIdentity;
};

}  // namespace ZelvCtl
