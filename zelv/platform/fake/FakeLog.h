#pragma once

#include <algorithm>
#include <chrono>
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

// In the header, so that the tests of the host's platform, which link no fakes, have it too.

inline LogCapture::LogCapture() {
  PCRealDebug::SetSink(&LogCapture::collect, this);
  PCRealDebug::SetLevel(PCRealDebug::Trace);
}

inline LogCapture::~LogCapture() {
  PCRealDebug::SetLevel(PCRealDebug::Warning);
  PCRealDebug::SetSink(nullptr, nullptr);
}

inline void LogCapture::collect(unsigned long aLevel, char const* aText, void* aUserData) {
  auto& self = *static_cast<LogCapture*>(aUserData);
  std::lock_guard lock(self.mLock);
  self.mLines.push_back({aLevel, aText});
  self.mGrown.notify_all();
}

inline int LogCapture::countLocked(unsigned long aLevel, std::string const& aText) const {
  return static_cast<int>(std::count(mLines.begin(), mLines.end(), LogLine{aLevel, aText}));
}

inline int LogCapture::count(unsigned long aLevel, std::string const& aText) const {
  std::lock_guard lock(mLock);
  return countLocked(aLevel, aText);
}

inline int LogCapture::countContaining(unsigned long aLevel, std::string const& aPart) const {
  std::lock_guard lock(mLock);
  return static_cast<int>(std::count_if(mLines.begin(), mLines.end(), [&](LogLine const& line) {
    return line.level == aLevel && line.text.find(aPart) != std::string::npos;
  }));
}

inline int LogCapture::count(unsigned long aLevel) const {
  return countContaining(aLevel, "");
}

inline bool LogCapture::has(unsigned long aLevel, std::string const& aText) const {
  return count(aLevel, aText) > 0;
}

inline bool LogCapture::hasContaining(unsigned long aLevel, std::string const& aPart) const {
  return countContaining(aLevel, aPart) > 0;
}

inline bool LogCapture::waitFor(unsigned long aLevel, std::string const& aText, int aCount,
                                int aTimeoutMs) const {
  std::unique_lock lock(mLock);
  return mGrown.wait_for(lock, std::chrono::milliseconds(aTimeoutMs),
                         [&] { return countLocked(aLevel, aText) >= aCount; });
}

inline std::vector<LogLine> LogCapture::lines() const {
  std::lock_guard lock(mLock);
  return mLines;
}

inline std::vector<std::string> LogCapture::texts(unsigned long aLevel) const {
  std::lock_guard lock(mLock);
  std::vector<std::string> texts;
  for (LogLine const& line : mLines) {
    if (line.level == aLevel) {
      texts.push_back(line.text);
    }
  }
  return texts;
}

inline void LogCapture::clear() {
  std::lock_guard lock(mLock);
  mLines.clear();
}

inline std::string LogCapture::dump() const {
  std::string text;
  for (LogLine const& line : lines()) {
    text += std::to_string(line.level) + ' ' + line.text + '\n';
  }
  return text;
}

}  // namespace Zelv::Platform::Fake
