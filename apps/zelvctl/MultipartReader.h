#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace ZelvCtl {

/// Takes apart the answer to a request for assets (a multipart body, RFC 2046) as it arrives, in
/// pieces of any size. A part with a "Content-Length" is a file, whose bytes are handed on and
/// never kept; any other is a text, which ends at the next delimiter.
class MultipartReader {
 public:
  /// The head of a part. Texts of others, not checked.
  struct Part {
    std::string id;                     ///< "Content-ID"
    std::string type;                   ///< "Content-Type"
    std::optional<std::uint64_t> size;  ///< of a file
  };

  /// Told of the parts in their order, within read(). What it throws leaves read(), which MUST not
  /// be called again then.
  class Listener {
   public:
    virtual ~Listener() = default;
    virtual void onText(std::string const& aText) = 0;
    virtual void onFile(Part const& aPart) = 0;
    virtual void onFileData(std::string_view aBytes) = 0;
    virtual void onFileEnd() = 0;
  };

  /// The answer is none.
  class Malformed : public std::runtime_error {
   public:
    using std::runtime_error::runtime_error;
  };

  static constexpr std::size_t MaxHead = 16384;                    ///< bytes of the head of a part
  static constexpr std::size_t MaxText = 8 * 1024 * 1024 + 65536;  ///< sets read 8 MiB at most
  static constexpr std::size_t MaxGap = 16;                        ///< line ends before a delimiter

  /// The boundary that the type of an answer names, under the word that sets have for it or the
  /// right one. Nothing for another type.
  static std::optional<std::string> boundaryOf(std::string const& aContentType);

  /// @param aListener  outlives the object.
  MultipartReader(std::string const& aBoundary, Listener& aListener);

  /// Takes the next bytes. Throws Malformed; what has been told by then stays told, and read() MUST
  /// not be called again.
  void read(std::string_view aBytes);

  /// True behind the closing delimiter. What comes then is passed over.
  bool isComplete() const { return mState == Closed; }

 private:
  enum State { Gap, BehindDelimiter, Head, Text, File, Closed };

  void readSome(std::string_view& aBytes);
  void readGap(char aByte);
  void readBehindDelimiter(char aByte);
  void readHead(char aByte);
  void readText(std::string_view& aBytes);
  void readFile(std::string_view& aBytes);
  void beginPart();
  void beginGap();

  std::string const mDelimiter;  ///< with the line end before it
  Listener& mListener;
  State mState = Gap;
  std::size_t mMatched = 0;  ///< bytes of the delimiter without its line end
  std::size_t mGap = 0;
  std::string mKept;        ///< of a delimiter's end, a head or a text
  std::uint64_t mLeft = 0;  ///< bytes of the file
};

}  // namespace ZelvCtl
