#include "zelv/infrastructure/HTTPHeader.h"

#include <utility>

#include "zelv/infrastructure/HTTPText.h"

namespace Zelv::Infrastructure {

HTTPHeader::HTTPHeader(std::string aName, std::string aValue)
    : mName(std::move(aName)), mValue(std::move(aValue)) {}

HTTPHeader::HTTPHeader(std::string const& aLine) {
  m_ParseHeaderLine(aLine);
}

void HTTPHeader::Parse(std::string const& aLine) {
  m_ParseHeaderLine(aLine);
}

void HTTPHeader::m_ParseHeaderLine(std::string_view aLine) {
  auto const [name, value] = firstWords<2>(aLine, ":");
  mName = name;
  mValue = value;
}

std::string HTTPHeader::Serialize(bool aLineEnd) const {
  return mName + ": " + mValue + (aLineEnd ? "\r\n" : "");
}

}  // namespace Zelv::Infrastructure
