#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "zelv/infrastructure/BufferChunk.h"
#include "zelv/infrastructure/HTTPDocument.h"
#include "zelv/platform/Export.h"

namespace Zelv::Infrastructure {

/// Reads one HTTP request (RFC 9112), in pieces of any size as they come from a socket, into an
/// HTTPDocument.
///
/// Made for one port. Multipart bodies, chunked ones, those of more than 512 KiB and those without
/// a length are refused as not implemented; header names count in exact case. Used by one thread.
class ZELV_EXPORT HTTPParser {
 public:
  /// What read() tells of a failure. On success it leaves the caller's variable as it was.
  enum Status {
    STATUS_NONE = 0,
    STATUS_COMPLETE = 2,
    STATUS_COMPLETE_STORED = 3,
    STATUS_REFUSED = 4,
    STATUS_READ_ERROR = 5
  };

  using bufferChunk = BufferChunk;

  HTTPParser();
  HTTPParser(HTTPParser const&) = delete;
  HTTPParser& operator=(HTTPParser const&) = delete;
  virtual ~HTTPParser();

  /// Takes the next bytes. A size of 0 says that no more will come, which the header block does not
  /// look at; a negative one that reading failed. Headers of more than 64 KiB are refused.
  ///
  /// @param aDocument  filled as far as the request was understood; the same one in each call.
  /// @param aStatus    set to 4 or 5 when the request is refused, otherwise left alone.
  /// @return 0 when the request has ended, well or badly; anything else asks for more.
  int read(HTTPDocument* aDocument, char const* aData, int aSize, Status& aStatus);

  /// Reads a request that is complete but for the end of its headers. @return whether it was
  /// understood.
  bool loadFromString(HTTPDocument* aDocument, std::string const& aText);

  /// Makes it ready for another request.
  void reset();

  /// @name Not implemented; they do nothing.
  /// @{
  void createResponse(HTTPDocument* aDocument, int aCode);
  void createResponseToLast(HTTPDocument* aDocument);
  /// @}

  /// What a response line carries: "202 Accepted", or after a refusal "400 Bad Request" or
  /// "501 Not Implemented".
  std::string const& getStatusText() const { return mStatusText; }

  /// In how many pieces of memory the body is kept while it arrives: one for each 8 KiB or so,
  /// however small the pieces are that it comes in.
  std::size_t keptPieces() const { return mMemory.size(); }

  /// Appends the parts of aText between separators, empty ones included, to aParts. An empty text
  /// has no parts.
  ///
  /// @param aAnyOf  each character of aSeparator is one; otherwise all of it together is.
  static void split_on(std::string const& aText, std::vector<std::string>& aParts,
                       std::string const& aSeparator, bool aAnyOf);

  /// @name Copies without the given characters at the head, the tail, or both.
  /// @{
  static std::string trim_head(std::string const& aText, std::string const& aCharacters);
  static std::string trim_tail(std::string const& aText, std::string const& aCharacters);
  static std::string trim(std::string const& aText, std::string const& aCharacters);
  /// @}

 private:
  int m_readInHeader(HTTPDocument& aDocument, std::string_view aData, Status& aStatus);
  int m_beginBody(HTTPDocument& aDocument, std::string_view aRest, Status& aStatus);
  int m_readInBody(HTTPDocument& aDocument, std::string_view aData);
  bool m_processHeaders(HTTPDocument& aDocument, std::string_view aHeaders);
  void readLength(HTTPDocument const& aDocument);
  void keepPiece(std::string_view aData);
  void storeBody(HTTPDocument& aDocument, std::string_view aLast) const;
  void subtract(std::size_t aSize);
  int refuse(char const* aStatusText, char const* aReason, Status& aStatus);

  std::string mStatusText;
  std::string mHeader;
  bool mAttachmentMode = false;
  std::string mBoundary;
  /// Bytes still expected; negative when more came.
  int mRemaining = 0;
  int mHeaderSize = 0;
  int mContentLength = 0;
  int mBytesRead = 0;
  int mState = 0;
  bool mHeadersComplete = false;
  /// What the body has brought so far; each piece is kept until the end joins them.
  std::vector<bufferChunk> mChunks;
  std::vector<std::unique_ptr<char[]>> mMemory;
  /// Bytes that the last piece of memory still has room for.
  std::size_t mRoom = 0;
};

}  // namespace Zelv::Infrastructure
