#pragma once

#include <string>

#include "zelv/platform/Export.h"

namespace Zelv::Infrastructure {

/// The address of an endpoint: protocol, domain, port and path, as in "tcp://192.0.2.7:4446/".
///
/// The parser is positional and checks no part. How exactly it cuts is relied on by peers: the text
/// of a URL crosses the network, and is the key of a registration.
class ZELV_EXPORT URL {
 public:
  /// Four empty parts.
  URL() = default;

  /// Parses aURL. Throws std::logic_error "Invalid URL." where parseURL() gives false, and passes
  /// on what that throws.
  explicit URL(std::string const& aURL);

  /// Takes the four parts as they are.
  URL(std::string const& aProtocol, std::string const& aDomainName, std::string const& aPort,
      std::string const& aPath);

  URL(URL const&) = default;
  URL& operator=(URL const&) = default;
  virtual ~URL() = default;

  /// Cuts aURL into the four parts. Returns false, with the parts as they were, for a text without
  /// a colon or without a port. Throws std::out_of_range for a text that ends right behind its
  /// first colon or one character later.
  bool parseURL(std::string& aURL);

  std::string getProtocol() const { return mProtocol; }
  std::string getDomainName() const { return mDomainName; }
  std::string getPath() const { return mPath; }

  /// The leading digits of the port, after white space; 0 without any.
  int getPort() const;

  /// "protocol://domain:port/path", with the ":" and the "/" also where a part is empty.
  std::string toString() const;

 private:
  std::string mProtocol;
  std::string mDomainName;
  std::string mPort;
  std::string mPath;
};

}  // namespace Zelv::Infrastructure
