#pragma once

#include "zelv/platform/PCRealDebug.h"

/// Writes "NAME: Entry." at trace level now and "NAME: Exit." at the end of the scope, however that
/// end comes about.
class TraceScope {
 public:
  /// @param aName  class and operation, as in "CommandController::processTasks"; MUST outlive the
  ///               scope.
  explicit TraceScope(char const* aName) : mName(aName) {
    if (PCRealDebug::Enabled(PCRealDebug::Trace)) {
      PCRealDebug::Print(PCRealDebug::Trace, "%s: Entry.", mName);
    }
  }
  TraceScope(TraceScope const&) = delete;
  TraceScope& operator=(TraceScope const&) = delete;
  ~TraceScope() {
    if (PCRealDebug::Enabled(PCRealDebug::Trace)) {
      PCRealDebug::Print(PCRealDebug::Trace, "%s: Exit.", mName);
    }
  }

 private:
  char const* mName;
};
