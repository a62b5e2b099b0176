#pragma once

#include <string>
#include <string_view>

#include "zelv/platform/Export.h"

namespace Zelv::Infrastructure {

/// One header of an HTTP message (RFC 9110, section 5), as far as this system reads them.
class ZELV_EXPORT HTTPHeader {
 public:
  HTTPHeader() = default;

  /// Takes both as they are.
  HTTPHeader(std::string aName, std::string aValue);

  /// As Parse().
  explicit HTTPHeader(std::string const& aLine);

  HTTPHeader(HTTPHeader const&) = default;
  HTTPHeader& operator=(HTTPHeader const&) = default;
  virtual ~HTTPHeader() = default;

  /// Reads "name: value". A value ends at its first colon: of "Host: 192.0.2.7:4450" it is
  /// "192.0.2.7". Blanks around both are cut off, and colons in front of the name are skipped.
  void Parse(std::string const& aLine);

  /// As Parse(), for a piece of a longer text.
  void m_ParseHeaderLine(std::string_view aLine);

  /// "name: value", and the end of a line if asked for.
  std::string Serialize(bool aLineEnd) const;

  std::string const& GetName() const { return mName; }
  std::string const& GetValue() const { return mValue; }

 private:
  std::string mName;
  std::string mValue;
};

}  // namespace Zelv::Infrastructure
