#pragma once

#include <cstddef>
#include <string>

namespace Zelv::Adapter {

/// The text of one TCP message while it arrives. Bounds one text to 16 MiB and all that are
/// arriving in this process to 64 MiB, so that no number of peers can fill the memory.
class IncomingText {
 public:
  static constexpr std::size_t MaxSize = 16U << 20;
  static constexpr std::size_t MaxInFlight = 64U << 20;

  IncomingText() = default;
  IncomingText(IncomingText const&) = delete;
  IncomingText& operator=(IncomingText const&) = delete;
  ~IncomingText();

  /// Appends a piece. @return false, with nothing appended, when a bound would be passed.
  bool append(char const* aText, std::size_t aSize);

  std::string const& text() const { return mText; }

  /// The bytes of all texts that are arriving now.
  static std::size_t inFlight();

 private:
  std::string mText;
  std::size_t mCounted = 0;
};

}  // namespace Zelv::Adapter
