#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <unordered_set>

namespace ZelvCtl {

/// The messages that have come, by their identifiers: each comes as several copies. Keeps the
/// newest MaxEntries, so that strangers cannot fill it.
class SeenIds {
 public:
  static constexpr std::size_t MaxEntries = 4096;
  static constexpr std::size_t MaxLength = 128;

  /// Notes a message. @return true when it was noted before. A message without an identifier, or
  /// with one that is too long, is never a copy.
  bool check(std::string const& aMessageId);

 private:
  std::unordered_set<std::string> mIds;
  std::deque<std::string> mOrder;
};

}  // namespace ZelvCtl
