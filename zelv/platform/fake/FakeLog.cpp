#include "zelv/platform/fake/FakeLog.h"

#include <algorithm>
#include <chrono>

namespace Zelv::Platform::Fake {

LogCapture::LogCapture() {
  PCRealDebug::SetSink(&LogCapture::collect, this);
  PCRealDebug::SetLevel(PCRealDebug::Trace);
}

LogCapture::~LogCapture() {
  PCRealDebug::SetLevel(PCRealDebug::Warning);
  PCRealDebug::SetSink(nullptr, nullptr);
}

void LogCapture::collect(unsigned long aLevel, char const* aText, void* aUserData) {
  auto& self = *static_cast<LogCapture*>(aUserData);
  std::lock_guard lock(self.mLock);
  self.mLines.push_back({aLevel, aText});
  self.mGrown.notify_all();
}

int LogCapture::countLocked(unsigned long aLevel, std::string const& aText) const {
  return static_cast<int>(std::count(mLines.begin(), mLines.end(), LogLine{aLevel, aText}));
}

int LogCapture::count(unsigned long aLevel, std::string const& aText) const {
  std::lock_guard lock(mLock);
  return countLocked(aLevel, aText);
}

int LogCapture::countContaining(unsigned long aLevel, std::string const& aPart) const {
  std::lock_guard lock(mLock);
  return static_cast<int>(std::count_if(mLines.begin(), mLines.end(), [&](LogLine const& line) {
    return line.level == aLevel && line.text.find(aPart) != std::string::npos;
  }));
}

int LogCapture::count(unsigned long aLevel) const {
  return countContaining(aLevel, "");
}

bool LogCapture::has(unsigned long aLevel, std::string const& aText) const {
  return count(aLevel, aText) > 0;
}

bool LogCapture::hasContaining(unsigned long aLevel, std::string const& aPart) const {
  return countContaining(aLevel, aPart) > 0;
}

bool LogCapture::waitFor(unsigned long aLevel, std::string const& aText, int aCount,
                         int aTimeoutMs) const {
  std::unique_lock lock(mLock);
  return mGrown.wait_for(lock, std::chrono::milliseconds(aTimeoutMs),
                         [&] { return countLocked(aLevel, aText) >= aCount; });
}

std::vector<LogLine> LogCapture::lines() const {
  std::lock_guard lock(mLock);
  return mLines;
}

std::vector<std::string> LogCapture::texts(unsigned long aLevel) const {
  std::lock_guard lock(mLock);
  std::vector<std::string> texts;
  for (LogLine const& line : mLines) {
    if (line.level == aLevel) {
      texts.push_back(line.text);
    }
  }
  return texts;
}

void LogCapture::clear() {
  std::lock_guard lock(mLock);
  mLines.clear();
}

std::string LogCapture::dump() const {
  std::string text;
  for (LogLine const& line : lines()) {
    text += std::to_string(line.level) + ' ' + line.text + '\n';
  }
  return text;
}

}  // namespace Zelv::Platform::Fake
