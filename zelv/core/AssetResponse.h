#pragma once

#include <string>

namespace Zelv {

/// The bytes of an answer: the head, the parts of a multipart message (RFC 2046, section 5.1), and
/// the pages that stand for an error.
class AssetResponse {
 public:
  /// @param aStatus    code and words, as "202 Accepted".
  /// @param aBoundary  separates the parts.
  static std::string head(std::string const& aStatus, std::string const& aBoundary);

  static std::string textPart(std::string const& aBoundary, std::string const& aText);

  /// What stands in front of a file of aSize bytes.
  static std::string filePartHead(std::string const& aBoundary, std::string const& aMimeType,
                                  std::string const& aId, long long aSize);

  /// What stands behind a file. @param aLast  whether it is the last one of all.
  static std::string filePartEnd(bool aLast);

  static std::string closingDelimiter(std::string const& aBoundary);

  /// For a request that the parser refused. Between the version and the status stands no blank.
  static std::string refusedPage(std::string const& aStatus);
  static std::string methodNotAllowedPage();
  static std::string badRequestPage();
};

}  // namespace Zelv
