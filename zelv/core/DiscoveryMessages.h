#pragma once

#include <string>

#include "zelv/core/DiscoverySettings.h"

namespace Zelv {

/// Writes the messages of discovery. They are put together as text: nothing in them is escaped, and
/// peers read the very form that stands here.
class DiscoveryMessages {
 public:
  explicit DiscoveryMessages(DiscoverySettings const& aSettings) : mSettings(aSettings) {}

  std::string probe() const;
  std::string resolve(std::string const& aDeviceId) const;
  std::string bye() const;
  std::string heartBeat() const;

  /// @param aName  the set's name at this moment.
  std::string hello(std::string const& aName) const;
  /// @param aRelatesTo  the MessageID of what is answered.
  std::string probeMatch(std::string const& aName, std::string const& aRelatesTo) const;
  std::string resolveMatch(std::string const& aName, std::string const& aRelatesTo) const;

 private:
  std::string envelope(std::string const& aHeaderRest, std::string const& aBody) const;
  std::string from() const;
  std::string replyTo() const;
  std::string device(std::string const& aName) const;
  std::string service(char const* aName, char const* aProtocol, char const* aPort) const;

  DiscoverySettings const& mSettings;
};

}  // namespace Zelv
