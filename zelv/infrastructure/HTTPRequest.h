#pragma once

#include <string>
#include <string_view>

#include "zelv/platform/Export.h"

namespace Zelv::Infrastructure {

/// The request line of an HTTP message (RFC 9112, section 3): method, URI and version.
class ZELV_EXPORT HTTPRequest {
 public:
  HTTPRequest() = default;

  /// As Parse().
  explicit HTTPRequest(std::string const& aLine);

  HTTPRequest(HTTPRequest const&) = default;
  HTTPRequest& operator=(HTTPRequest const&) = default;
  virtual ~HTTPRequest() = default;

  /// Takes the first three words between blanks and tabs; those that are missing are empty, and
  /// what follows the third is not read.
  void Parse(std::string const& aLine);

  /// As Parse(), for a piece of a longer text.
  void m_ParseRequestHeader(std::string_view aLine);

  /// "method URI version", and the end of a line if asked for.
  std::string Serialize(bool aLineEnd) const;

  std::string const& GetMethod() const { return mMethod; }
  std::string const& GetURI() const { return mURI; }
  std::string const& GetVersion() const { return mVersion; }

 private:
  std::string mMethod;
  std::string mURI;
  std::string mVersion;
};

}  // namespace Zelv::Infrastructure
