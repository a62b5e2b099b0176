#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

namespace ZelvTv {

/// Carries finished lines from the library's threads to the one thread that prints.
///
/// Callbacks run under locks of the library, so they must not wait for a reader of standard output;
/// they leave their line here and return. Lines that nobody collects are bounded by their size;
/// beyond it the newest are dropped and counted.
class EventQueue {
 public:
  static constexpr std::size_t kMaximumBytes = std::size_t{64} << 20U;

  EventQueue();
  EventQueue(EventQueue const&) = delete;
  EventQueue& operator=(EventQueue const&) = delete;
  ~EventQueue();

  /// Adds one line. From any thread.
  void Post(std::string aLine);

  /// Makes Descriptor() readable without a line. From any thread.
  void Wake();

  /// All lines so far, in the order of their arrival; behind them "lost N" when some were dropped.
  std::vector<std::string> Take();

  /// Readable for poll() while there are lines, or after Wake(), until Take().
  int Descriptor() const { return mDescriptor; }

 private:
  std::mutex mMutex;
  std::vector<std::string> mLines;
  std::size_t mBytes = 0;
  std::size_t mLost = 0;
  int const mDescriptor;
};

}  // namespace ZelvTv
