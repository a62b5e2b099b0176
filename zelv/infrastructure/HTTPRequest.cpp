#include "zelv/infrastructure/HTTPRequest.h"

#include "zelv/infrastructure/HTTPText.h"

namespace Zelv::Infrastructure {

HTTPRequest::HTTPRequest(std::string const& aLine) {
  m_ParseRequestHeader(aLine);
}

void HTTPRequest::Parse(std::string const& aLine) {
  m_ParseRequestHeader(aLine);
}

void HTTPRequest::m_ParseRequestHeader(std::string_view aLine) {
  auto const [method, uri, version] = firstWords<3>(aLine, " \t");
  mMethod = method;
  mURI = uri;
  mVersion = version;
}

std::string HTTPRequest::Serialize(bool aLineEnd) const {
  return mMethod + " " + mURI + " " + mVersion + (aLineEnd ? "\r\n" : "");
}

}  // namespace Zelv::Infrastructure
