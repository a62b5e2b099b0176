#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "zelv/platform/PCRealDebug.h"

namespace Zelv::Platform::Fake {

/// One line of the log.
struct LogLine {
  unsigned long level;
  std::string text;
  bool operator==(LogLine const&) const = default;
};

/// Collects the log while it lives, all levels on; afterwards the log is as at start. One at a
/// time. Lines may come from any thread.
class LogCapture {
 public:
  LogCapture();
  LogCapture(LogCapture const&) = delete;
  LogCapture& operator=(LogCapture const&) = delete;
  ~LogCapture();

  /// How many lines of this level have exactly this text.
  int count(unsigned long aLevel, std::string const& aText) const;

  /// How many lines of this level hold aPart.
  int countContaining(unsigned long aLevel, std::string const& aPart) const;

  /// How many lines of this level there are at all.
  int count(unsigned long aLevel) const;

  bool has(unsigned long aLevel, std::string const& aText) const;
  bool hasContaining(unsigned long aLevel, std::string const& aPart) const;

  /// Waits, for at most aTimeoutMs of real time, until aCount lines of this level and text are
  /// there; for lines that another thread writes. @return whether they came.
  bool waitFor(unsigned long aLevel, std::string const& aText, int aCount = 1,
               int aTimeoutMs = 20000) const;

  std::vector<LogLine> lines() const;

  /// The texts of one level, in order.
  std::vector<std::string> texts(unsigned long aLevel) const;

  void clear();

  /// All lines, one a row, for the message of a failed test.
  std::string dump() const;

 private:
  static void collect(unsigned long aLevel, char const* aText, void* aUserData);
  int countLocked(unsigned long aLevel, std::string const& aText) const;

  mutable std::mutex mLock;
  mutable std::condition_variable mGrown;
  std::vector<LogLine> mLines;
};

}  // namespace Zelv::Platform::Fake
