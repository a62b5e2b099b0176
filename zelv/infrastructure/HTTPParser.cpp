#include "zelv/infrastructure/HTTPParser.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <utility>

#include "zelv/infrastructure/HTTPText.h"
#include "zelv/infrastructure/StringSearch.h"
#include "zelv/platform/PCRealDebug.h"

namespace Zelv::Infrastructure {

namespace {

char const* const cBadRequest = "400 Bad Request";
char const* const cNotImplemented = "501 Not Implemented";

constexpr int cRemainingAtFirst = 0x100000;
/// More would have to go to a file.
constexpr int cMaxStored = 0x80000;
/// What a body without a length is taken for.
constexpr int cUnknownLength = 0x1400000;
constexpr std::size_t cMaxHeader = 0x10000;
constexpr std::size_t cPiece = 0x2000;

int clamped(std::int64_t aNumber) {
  return static_cast<int>(std::clamp<std::int64_t>(aNumber, std::numeric_limits<int>::min(),
                                                   std::numeric_limits<int>::max()));
}

/// The end of the header block in the first aLength bytes from aBegin on.
int findEnd(std::string const& aHeader, std::size_t aBegin, std::size_t aLength) {
  static std::vector<std::string> const cEnd{"\r\n\r\n"};
  return StringSearch::FindFirst(cEnd, aHeader.data() + aBegin, static_cast<unsigned int>(aLength));
}

std::string header(HTTPDocument const& aDocument, std::string const& aName) {
  std::string value;
  aDocument.GetHeader(aName, value);
  return std::string(trimBoth(value, cHttpBlanks));
}

bool has(HTTPDocument const& aDocument, std::string const& aName) {
  std::string ignored;
  return aDocument.GetHeader(aName, ignored) == 0;
}

/// The part of a media type before the "/"; empty without one.
std::string primaryType(HTTPDocument const& aDocument) {
  std::string type;
  aDocument.GetHeader("Content-Type", type);
  std::size_t const slash = type.find('/');
  return slash == std::string::npos ? std::string() : type.substr(0, slash);
}

bool hasMediaType(HTTPDocument const& aDocument) {
  std::string type;
  aDocument.GetHeader("Content-Type", type);
  return type.find('/') != std::string::npos;
}

/// A file would be needed for it. Names that are read have no colon, so only a document that was
/// given the header beforehand has it.
bool isAttached(HTTPDocument const& aDocument) {
  std::string disposition;
  aDocument.GetHeader("Content-Disposition:", disposition);
  return disposition.rfind("attachment", 0) == 0;
}

/// The next line, which is taken off aText.
std::string_view takeLine(std::string_view& aText) {
  std::size_t const end = aText.find("\r\n");
  std::string_view const line = aText.substr(0, end);
  aText.remove_prefix(end == std::string_view::npos ? aText.size() : end + 2);
  return line;
}

}  // namespace

HTTPParser::HTTPParser() {
  reset();
}

HTTPParser::~HTTPParser() = default;

void HTTPParser::reset() {
  mStatusText = "202 Accepted";
  mHeader.clear();
  mBoundary.clear();
  mBytesRead = 0;
  mState = STATUS_NONE;
  mRemaining = cRemainingAtFirst;
  mHeadersComplete = false;
  mAttachmentMode = false;
  mChunks.clear();
  mMemory.clear();
  mRoom = 0;
}

int HTTPParser::read(HTTPDocument* aDocument, char const* aData, int aSize, Status& aStatus) {
  if (aSize < 0) {
    PCRealDebug::Print(PCRealDebug::Trace, "HTTPParser::read: Exit. (read error! size was %d)",
                       aSize);
    mState = aStatus = STATUS_READ_ERROR;
    mStatusText = cBadRequest;
    return 0;
  }
  std::string_view const data(aData, static_cast<std::size_t>(aSize));
  subtract(data.size());
  mBytesRead = clamped(std::int64_t{mBytesRead} + aSize);
  if (!mHeadersComplete) {
    return m_readInHeader(*aDocument, data, aStatus);
  }
  if (data.empty() && mRemaining > 0) {
    return refuse(cBadRequest, "HTTPParser::read: Exit. (terminated before end of document!)",
                  aStatus);
  }
  return m_readInBody(*aDocument, data);
}

void HTTPParser::subtract(std::size_t aSize) {
  mRemaining = clamped(std::int64_t{mRemaining} - static_cast<std::int64_t>(aSize));
}

int HTTPParser::refuse(char const* aStatusText, char const* aReason, Status& aStatus) {
  PCRealDebug::Print(PCRealDebug::Trace, "%s", aReason);
  mState = aStatus = STATUS_REFUSED;
  mStatusText = aStatusText;
  return 0;
}

// After a first piece of one to four bytes the search begins at the front again, but goes only as
// far as the new piece is long, and the body is taken from where it would begin without that first
// piece. Clients that send so few bytes first are answered by what comes of it.
int HTTPParser::m_readInHeader(HTTPDocument& aDocument, std::string_view aData, Status& aStatus) {
  std::size_t const before = mHeader.size();
  mHeader.append(aData);
  std::size_t const begin = before > 4 ? before - 4 : 0;
  std::size_t const length = aData.size() + (before > 4 ? 4 : 0);
  int const found = findEnd(mHeader, begin, length);
  std::size_t const end = begin + static_cast<std::size_t>(found);
  if (found < 0 ? mHeader.size() > cMaxHeader : end > cMaxHeader) {
    return refuse(cBadRequest, "HTTPParser::m_readInHeader: Exit. (header too long)", aStatus);
  }
  if (found < 0) {
    return 1;
  }
  std::size_t const rest = static_cast<std::size_t>(found) + (begin == 0 ? 4 : 0);
  mHeaderSize = static_cast<int>(end + 4);
  if (!m_processHeaders(aDocument, std::string_view(mHeader).substr(0, end))) {
    return refuse(cBadRequest, "HTTPParser::m_readInHeader: Exit. (header parsing failed)",
                  aStatus);
  }
  mHeadersComplete = true;
  return m_beginBody(aDocument, aData.substr(std::min(rest, aData.size())), aStatus);
}

int HTTPParser::m_beginBody(HTTPDocument& aDocument, std::string_view aRest, Status& aStatus) {
  if (!has(aDocument, "Host")) {
    // Whatever the words say, the request counts as one that ended well.
    PCRealDebug::Print(PCRealDebug::Detail,
                       "HTTPParser::m_readInHeader: Host was not Passed! 400 Bad Request!");
    PCRealDebug::Print(PCRealDebug::Trace,
                       "HTTPParser::m_readInHeader: Exit. (required host header was missing)");
    return 0;
  }
  if (!hasMediaType(aDocument)) {
    aDocument.SetBody(std::make_unique<char[]>(1), 0);
    return 0;
  }
  if (primaryType(aDocument) == "multipart") {
    return refuse(cNotImplemented,
                  "HTTPParser::m_readInHeader: Exit. (MULTIPART NOT YET IMPLEMENTED)", aStatus);
  }
  if (header(aDocument, "Transfer-Encoding") == "chunked") {
    return refuse(cNotImplemented,
                  "HTTPParser::m_readInHeader: Exit. (CHUNKED HANDLING NOT IMPLEMENTED)", aStatus);
  }
  readLength(aDocument);
  if (mRemaining > cMaxStored || isAttached(aDocument)) {
    return refuse(cNotImplemented,
                  "HTTPParser::m_readInHeader: Exit. (SAVE TO FILE NOT IMPLEMENTED)", aStatus);
  }
  if (mRemaining < 1) {
    return 0;
  }
  if (aRest.empty()) {
    return 1;
  }
  subtract(aRest.size());
  return m_readInBody(aDocument, aRest);
}

void HTTPParser::readLength(HTTPDocument const& aDocument) {
  if (!has(aDocument, "Content-Length")) {
    mRemaining = cUnknownLength;
    return;
  }
  mContentLength = clamped(std::strtol(header(aDocument, "Content-Length").c_str(), nullptr, 10));
  mRemaining = mContentLength;
}

bool HTTPParser::m_processHeaders(HTTPDocument& aDocument, std::string_view aHeaders) {
  std::string_view const first = takeLine(aHeaders);
  if (!aDocument.IsAttachment() && !aDocument.m_SetRequest(first)) {
    PCRealDebug::Print(PCRealDebug::Trace, "HTTPParser::m_processHeaders: Exit. (no request line)");
    return false;
  }
  while (!aHeaders.empty()) {
    std::string_view const line = takeLine(aHeaders);
    if (!trimBoth(line, cHttpBlanks).empty() && !aDocument.m_AddHeader(line)) {
      PCRealDebug::Print(PCRealDebug::Trace,
                         "HTTPParser::m_processHeaders: Exit. (header without a name)");
      return false;
    }
  }
  return true;
}

int HTTPParser::m_readInBody(HTTPDocument& aDocument, std::string_view aData) {
  if (mRemaining <= 0) {
    if (!aDocument.IsStoringSuppressed()) {
      storeBody(aDocument, aData);
    }
    return 0;
  }
  keepPiece(aData);
  return 1;
}

// What is kept for a single byte takes many, so that small pieces share one.
void HTTPParser::keepPiece(std::string_view aData) {
  if (mRoom < aData.size()) {
    mRoom = std::max(aData.size(), cPiece);
    mMemory.push_back(std::make_unique<char[]>(mRoom));
    mChunks.emplace_back().setBuffer(mMemory.back().get(), 0);
  }
  bufferChunk& last = mChunks.back();
  std::copy(aData.begin(), aData.end(), last.getBuffer() + last.getSize());
  last.setBuffer(last.getBuffer(), last.getSize() + static_cast<unsigned int>(aData.size()));
  mRoom -= aData.size();
}

// What came behind the length that was announced is cut off.
void HTTPParser::storeBody(HTTPDocument& aDocument, std::string_view aLast) const {
  std::size_t stored = 0;
  for (bufferChunk const& chunk : mChunks) {
    stored += chunk.getSize();
  }
  std::int64_t const wanted = static_cast<std::int64_t>(aLast.size()) + mRemaining;
  std::size_t const last = static_cast<std::size_t>(std::max<std::int64_t>(wanted, 0));
  std::size_t const total = stored + last;
  auto body = std::make_unique<char[]>(total + 1);
  char* to = body.get();
  for (bufferChunk const& chunk : mChunks) {
    to = std::copy_n(chunk.getBuffer(), chunk.getSize(), to);
  }
  std::copy_n(aLast.data(), last, to);
  aDocument.SetBody(std::move(body), static_cast<int>(total));
}

bool HTTPParser::loadFromString(HTTPDocument* aDocument, std::string const& aText) {
  Status status = STATUS_COMPLETE;
  std::string const text = aText + "\r\n\r\n";
  int const more =
      read(aDocument, text.data(), clamped(static_cast<std::int64_t>(text.size())), status);
  return more == 0 && (status == STATUS_COMPLETE || status == STATUS_COMPLETE_STORED);
}

void HTTPParser::createResponse(HTTPDocument*, int) {}

void HTTPParser::createResponseToLast(HTTPDocument*) {}

void HTTPParser::split_on(std::string const& aText, std::vector<std::string>& aParts,
                          std::string const& aSeparator, bool aAnyOf) {
  if (aText.empty()) {
    return;
  }
  std::size_t position = 0;
  for (;;) {
    std::size_t const found = aSeparator.empty() ? std::string::npos
                              : aAnyOf           ? aText.find_first_of(aSeparator, position)
                                                 : aText.find(aSeparator, position);
    aParts.push_back(aText.substr(position, found - position));
    if (found == std::string::npos) {
      return;
    }
    position = found + (aAnyOf ? 1 : aSeparator.size());
  }
}

std::string HTTPParser::trim_head(std::string const& aText, std::string const& aCharacters) {
  return std::string(trimHead(aText, aCharacters));
}

std::string HTTPParser::trim_tail(std::string const& aText, std::string const& aCharacters) {
  return std::string(trimTail(aText, aCharacters));
}

std::string HTTPParser::trim(std::string const& aText, std::string const& aCharacters) {
  return std::string(trimBoth(aText, aCharacters));
}

}  // namespace Zelv::Infrastructure
