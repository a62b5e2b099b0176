#pragma once

#include <chrono>
#include <memory>
#include <semaphore>
#include <string>

// What the tests of the contracts need of the platform that they run on. Each platform supplies it
// in its own folder, so that one body of a test holds for all.
namespace Zelv::Platform::Testing {

/// Lets this much time pass by the platform's clock; every alarm whose deadline lies before its end
/// has gone off then. Does not sleep: the host's platform waits for an alarm of its own.
void LetPass(int aMilliseconds);

/// Lets time pass until the condition holds. @return false when it does not come to hold.
template <typename Condition>
bool LetPassUntil(Condition aCondition) {
  for (int i = 0; i < 10000 && !aCondition(); ++i) {
    LetPass(1);
  }
  return aCondition();
}

/// Fresh read-only and writable directories, made known to Directories; removed at the end.
class TestDirectories {
 public:
  TestDirectories();
  TestDirectories(TestDirectories const&) = delete;
  TestDirectories& operator=(TestDirectories const&) = delete;
  ~TestDirectories();

  /// Both with a final "/".
  std::string const& readOnly() const;
  std::string const& writable() const;

 private:
  struct Content;
  std::unique_ptr<Content> mContent;
};

/// Something that happens on one thread and is waited for on another, with a bound.
class Event {
 public:
  void happen() { mCount.release(); }

  /// @return false when it did not happen within 20 seconds.
  bool wait() { return mCount.try_acquire_for(std::chrono::seconds(20)); }

 private:
  std::counting_semaphore<> mCount{0};
};

}  // namespace Zelv::Platform::Testing
