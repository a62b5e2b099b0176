#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "zelv/infrastructure/HTTPHeader.h"
#include "zelv/infrastructure/HTTPRequest.h"
#include "zelv/platform/Export.h"

namespace Zelv::Infrastructure {

/// One HTTP message: its request line, headers and body. HTTPParser fills it.
class ZELV_EXPORT HTTPDocument {
 public:
  HTTPDocument() = default;
  explicit HTTPDocument(HTTPRequest const& aRequest);

  /// A copy of everything, the body and the attachments included.
  HTTPDocument(HTTPDocument const& aOther);
  HTTPDocument& operator=(HTTPDocument const&) = delete;
  virtual ~HTTPDocument() = default;

  /// Looks a header up by its name, whose case counts. @return 0, or -1 with aValue as it was.
  int GetHeader(std::string const& aName, std::string& aValue) const;

  /// Sets a header, replacing the one of that name. @return 0, or -1 for an empty name.
  int SetHeader(std::string const& aName, std::string const& aValue);

  /// Adds the header that a line holds; of two with one name the first one stands. False, with
  /// nothing added, for a line without a name.
  bool m_AddHeader(std::string_view aLine);

  /// Takes the request line. False, with the one before kept, for a line without a method.
  bool m_SetRequest(std::string_view aLine);

  /// Not implemented, and says so in the log. A document with attachments gets the header that a
  /// multipart message has (RFC 2046, section 5.1), unless it has one with a boundary. @return 0.
  int Serialize();

  /// True for a part of a multipart message; such a document has no request line.
  bool IsAttachment() const { return mAttachment; }
  void SetAttachment(bool aAttachment) { mAttachment = aAttachment; }

  /// True if the parser is not to keep the body.
  bool IsStoringSuppressed() const { return mSuppressStoring; }
  void SuppressStoring(bool aSuppress) { mSuppressStoring = aSuppress; }

  HTTPRequest const& GetRequest() const { return mRequest; }

  /// Bytes of the body, without the 0 behind it.
  int GetBodySize() const { return mBodySize; }

  /// Owned by this document, with a 0 behind it; null while no body was stored.
  char const* GetBody() const { return mBody.get(); }

  /// @param aBody  aSize bytes and a 0.
  void SetBody(std::unique_ptr<char[]> aBody, int aSize);

  void AddAttachment(std::unique_ptr<HTTPDocument> aAttachment);

 private:
  void insert(std::unique_ptr<HTTPHeader> aHeader);
  void setMultipartType();

  bool mAttachment = false;
  bool mSuppressStoring = false;
  /// By the names that they hold themselves.
  std::map<std::string_view, std::unique_ptr<HTTPHeader>> mHeaders;
  HTTPRequest mRequest;
  int mBodySize = 0;
  std::unique_ptr<char[]> mBody;
  std::vector<std::unique_ptr<HTTPDocument>> mAttachments;
  std::string mBoundary;
};

}  // namespace Zelv::Infrastructure
