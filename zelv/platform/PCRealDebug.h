#pragma once

#include <atomic>

#include "zelv/platform/Export.h"

/// The log of the set. Lines may come from any thread, under any lock, until the process ends.
class ZELV_EXPORT PCRealDebug {
 public:
  /// Levels; the numbers are those of the set's log and stand in its files.
  enum Level : unsigned long {
    Error = 5020,    ///< failures
    Warning = 5021,  ///< unexpected but handled
    Trace = 5022,    ///< entry and exit of nearly every operation
    Notable = 5023,  ///< events worth seeing
    Detail = 5024,   ///< values of arguments and results
  };

  /// Receives one finished line. Called on the thread that logs, possibly on several at once and
  /// under any lock of the library: it MUST NOT call back into the library.
  using Sink = void (*)(unsigned long aLevel, char const* aText, void* aUserData);

  /// Writes one line, formatted as by printf. Returns at once when nobody listens to the level. No
  /// value takes more than 1,024 bytes of the line, so that no stranger's text fills the log; a
  /// null string is shown as "(null)". Throws nothing and leaves errno alone. What a sink logs
  /// itself is dropped.
  static void Print(unsigned long aLevel, char const* aFormat, ...)
      __attribute__((format(printf, 2, 3)));

  /// True when lines of this level go anywhere. Costs one load. Callers whose arguments are dear
  /// to compute ask it first.
  static bool Enabled(unsigned long aLevel) {
    return aLevel - Error < 5U &&
           (sLevels.load(std::memory_order_relaxed) >> (aLevel - Error) & 1U);
  }

  /// Lets lines up to and including this level through, in the order of the numbers above, except
  /// that Trace comes last: Error, Warning, Notable, Detail, Trace. At start: Warning.
  static void SetLevel(Level aLevel);

  /// Lets no line through at all.
  static void Silence();

  /// Sends lines to aSink instead of standard error; a null pointer brings standard error back.
  /// When it returns no thread is inside the former sink, whose user data may then go. MUST NOT be
  /// called by a sink.
  ///
  /// On standard error a line is one write, in which control bytes of values are shown as "\n" or
  /// "\x1b".
  static void SetSink(Sink aSink, void* aUserData);

 private:
  static std::atomic<unsigned> sLevels;
};
