#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

namespace Zelv {

/// The devices that were heard and not known, with the time at which they were asked to describe
/// themselves. One question is out for each at a time; strangers can neither fill the table nor
/// have more than MaxPerSecond questions sent.
class UnresolvedDevices {
 public:
  static constexpr std::size_t MaxEntries = 256;
  static constexpr int MaxPerSecond = 20;
  /// Seconds that a device has to answer. Only then may its entry give way in a full table.
  static constexpr std::int64_t Patience = 10;

  /// Notes the device. @return true when the question is to be sent now.
  bool note(std::string const& aDeviceId, std::int64_t aNow);

  /// Forgets the device. @return whether it was noted.
  bool take(std::string const& aDeviceId) { return mTimes.erase(aDeviceId) != 0; }

  /// Forgets what was noted before aLimit, calling aForgotten(id, time) for each.
  template <typename Forgotten>
  void forgetBefore(std::int64_t aLimit, Forgotten aForgotten) {
    std::erase_if(mTimes, [&](auto const& aEntry) {
      bool const old = aEntry.second < aLimit;
      if (old) {
        aForgotten(aEntry.first, aEntry.second);
      }
      return old;
    });
  }

  /// Moves all times, when the wall clock has jumped.
  void shift(std::int64_t aSeconds);

  std::size_t size() const { return mTimes.size(); }

 private:
  bool hasRoom(std::int64_t aNow);
  bool spendQuestion();

  std::map<std::string, std::int64_t> mTimes;
  std::int64_t mSecond = -1;
  int mQuestions = 0;
};

}  // namespace Zelv
