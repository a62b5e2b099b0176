#include "apps/zelvctl/MultipartReader.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <utility>

namespace ZelvCtl {

namespace {

constexpr std::string_view lineEnd = "\r\n";
constexpr std::string_view headEnd = "\r\n\r\n";
constexpr std::size_t longestBoundary = 70;

char lower(char aLetter) {
  return aLetter >= 'A' && aLetter <= 'Z' ? static_cast<char>(aLetter - 'A' + 'a') : aLetter;
}

/// Whatever the locale.
bool isSame(std::string_view aOne, std::string_view aOther) {
  return std::equal(aOne.begin(), aOne.end(), aOther.begin(), aOther.end(),
                    [](char aLeft, char aRight) { return lower(aLeft) == lower(aRight); });
}

std::string_view trim(std::string_view aText) {
  auto const first = aText.find_first_not_of(" \t");
  auto const last = aText.find_last_not_of(" \t");
  return first == std::string_view::npos ? "" : aText.substr(first, last - first + 1);
}

/// Takes the text up to a separator, which goes too.
std::string_view next(std::string_view& aText, std::string_view aSeparator) {
  auto const end = aText.find(aSeparator);
  std::string_view const item = aText.substr(0, end);
  aText.remove_prefix(end == std::string_view::npos ? aText.size() : end + aSeparator.size());
  return item;
}

std::string_view unquoted(std::string_view aText) {
  bool const isQuoted = aText.size() >= 2 && aText.front() == '"' && aText.back() == '"';
  return isQuoted ? aText.substr(1, aText.size() - 2) : aText;
}

bool isBoundary(std::string_view aText) {
  bool const isPlain = std::all_of(aText.begin(), aText.end(),
                                   [](char aByte) { return aByte > ' ' && aByte < '\x7f'; });
  return !aText.empty() && aText.size() <= longestBoundary && isPlain;
}

std::uint64_t sizeOf(std::string_view aText) {
  std::uint64_t size = 0;
  auto const [end, error] = std::from_chars(aText.data(), aText.data() + aText.size(), size);
  if (error != std::errc() || end != aText.data() + aText.size() ||
      size > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
    throw MultipartReader::Malformed("the size of a file is no number");
  }
  return size;
}

/// One line of a head. A field that comes twice could mean one thing here and another elsewhere.
void readField(std::string_view aLine, MultipartReader::Part& aPart, std::string& aSize) {
  auto const colon = aLine.find(':');
  if (colon == std::string_view::npos || colon == 0) {
    throw MultipartReader::Malformed("a line in the head of a part has no name");
  }
  std::string_view const name = aLine.substr(0, colon);
  std::string* const field = isSame(name, "Content-ID")       ? &aPart.id
                             : isSame(name, "Content-Type")   ? &aPart.type
                             : isSame(name, "Content-Length") ? &aSize
                                                              : nullptr;
  if (field == nullptr) {
    return;
  }
  if (!field->empty()) {
    throw MultipartReader::Malformed("the head of a part says something twice");
  }
  *field = trim(aLine.substr(colon + 1));
  if (field->empty()) {
    throw MultipartReader::Malformed("a line in the head of a part has no value");
  }
}

MultipartReader::Part partOf(std::string_view aHead) {
  MultipartReader::Part part;
  std::string size;
  while (aHead != lineEnd) {
    readField(next(aHead, lineEnd), part, size);
  }
  if (!size.empty()) {
    part.size = sizeOf(size);
  }
  return part;
}

}  // namespace

std::optional<std::string> MultipartReader::boundaryOf(std::string const& aContentType) {
  std::string_view rest = aContentType;
  if (!isSame(trim(next(rest, ";")).substr(0, 10), "multipart/")) {
    return std::nullopt;
  }
  while (!rest.empty()) {
    std::string_view value = next(rest, ";");
    std::string_view const name = trim(next(value, "="));
    if (isSame(name, "boundry") || isSame(name, "boundary")) {
      std::string_view const boundary = unquoted(trim(value));
      return isBoundary(boundary) ? std::optional<std::string>(boundary) : std::nullopt;
    }
  }
  return std::nullopt;
}

MultipartReader::MultipartReader(std::string const& aBoundary, Listener& aListener)
    : mDelimiter("\r\n--" + aBoundary), mListener(aListener) {}

void MultipartReader::read(std::string_view aBytes) {
  while (!aBytes.empty() && !isComplete()) {
    readSome(aBytes);
  }
}

void MultipartReader::readSome(std::string_view& aBytes) {
  if (mState == Text) {
    return readText(aBytes);
  }
  if (mState == File) {
    return readFile(aBytes);
  }
  char const byte = aBytes.front();
  aBytes.remove_prefix(1);
  switch (mState) {
    case Gap:
      return readGap(byte);
    case BehindDelimiter:
      return readBehindDelimiter(byte);
    default:
      return readHead(byte);
  }
}

// Behind a file there is one line end, or two behind the last one.
void MultipartReader::readGap(char aByte) {
  if (mMatched == 0 && (aByte == '\r' || aByte == '\n') && mGap < MaxGap) {
    ++mGap;
    return;
  }
  std::string_view const delimiter = std::string_view(mDelimiter).substr(lineEnd.size());
  if (aByte != delimiter[mMatched]) {
    throw Malformed("there is something between its parts");
  }
  if (++mMatched == delimiter.size()) {
    mKept.clear();
    mState = BehindDelimiter;
  }
}

void MultipartReader::readBehindDelimiter(char aByte) {
  mKept += aByte;
  if (mKept == "--") {
    mState = Closed;
  } else if (mKept == lineEnd) {
    mKept.clear();
    mState = Head;
  } else if (mKept != "-" && mKept != "\r") {
    throw Malformed("a delimiter does not end its line");
  }
}

void MultipartReader::readHead(char aByte) {
  mKept += aByte;
  if (mKept == lineEnd || mKept.ends_with(headEnd)) {
    beginPart();
  } else if (mKept.size() >= MaxHead) {
    throw Malformed("the head of a part is too long");
  }
}

void MultipartReader::beginPart() {
  Part const part = partOf(mKept);
  mKept.clear();
  if (!part.size) {
    mState = Text;
    return;
  }
  mLeft = *part.size;
  mState = File;
  mListener.onFile(part);
  if (mLeft == 0) {
    beginGap();
  }
}

void MultipartReader::beginGap() {
  mGap = 0;
  mMatched = 0;
  mState = Gap;
  mListener.onFileEnd();
}

void MultipartReader::readFile(std::string_view& aBytes) {
  std::string_view const bytes =
      aBytes.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(mLeft, aBytes.size())));
  aBytes.remove_prefix(bytes.size());
  mLeft -= bytes.size();
  mListener.onFileData(bytes);
  if (mLeft == 0) {
    beginGap();
  }
}

// The delimiter may have begun in what came before.
void MultipartReader::readText(std::string_view& aBytes) {
  std::size_t const known = mKept.size();
  std::size_t const from = known - std::min(known, mDelimiter.size() - 1);
  mKept += aBytes;
  auto const end = mKept.find(mDelimiter, from);
  if (std::min(end, mKept.size() - std::min(mKept.size(), mDelimiter.size() - 1)) > MaxText) {
    throw Malformed("a text is too long");
  }
  if (end == std::string::npos) {
    aBytes = {};
    return;
  }
  aBytes.remove_prefix(end + mDelimiter.size() - known);
  mKept.resize(end);
  mState = BehindDelimiter;
  std::string const text = std::move(mKept);
  mKept = {};
  mListener.onText(text);
}

}  // namespace ZelvCtl
