#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <string>

namespace Zelv::Controller {

/// The messages that a receiver has handled, by their MessageID, so that further copies are
/// dropped.
///
/// Keeps the newest MaxEntries and takes no identifier longer than MaxIdLength, so that strangers
/// cannot fill it. Has no lock; its owner locks.
class SeenMessages {
 public:
  static constexpr std::size_t MaxEntries = 4096;
  static constexpr std::size_t MaxIdLength = 128;

  /// Notes a message. True when it was noted before; the time of the first copy then stays.
  bool check(std::string const& aMessageId, std::int64_t aNow);

  /// Forgets what was first seen before aLimit, calling aForgotten(id, time) for each.
  template <typename Forgotten>
  void forgetBefore(std::int64_t aLimit, Forgotten aForgotten) {
    for (auto entry = mTimes.begin(); entry != mTimes.end();) {
      if (entry->second < aLimit) {
        aForgotten(entry->first, entry->second);
        entry = mTimes.erase(entry);
      } else {
        ++entry;
      }
    }
    dropForgottenFromOrder();
  }

  /// Moves all times, when the wall clock has jumped.
  void shift(std::int64_t aSeconds);

  std::size_t size() const { return mTimes.size(); }

 private:
  void dropForgottenFromOrder();

  std::map<std::string, std::int64_t> mTimes;
  /// The same identifiers, oldest first.
  std::deque<std::string> mOrder;
};

}  // namespace Zelv::Controller
