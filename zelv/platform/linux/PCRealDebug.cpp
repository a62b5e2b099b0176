#include "zelv/platform/PCRealDebug.h"

#include <pthread.h>

#include <cerrno>
#include <cstdarg>
#include <exception>
#include <string>

#include "zelv/platform/linux/ErrorStream.h"
#include "zelv/platform/linux/LogFormat.h"

using Zelv::Platform::ErrorStream;
using Zelv::Platform::LogFormat;

namespace {

constexpr unsigned bit(PCRealDebug::Level aLevel) {
  return 1U << (aLevel - PCRealDebug::Error);
}

void toStandardError(unsigned long aLevel, char const* aText, void*) {
  static char const* const cNames[] = {"error", "warning", "trace", "notable", "detail"};
  ErrorStream::WriteLine(std::string("zelv ") + cNames[aLevel - PCRealDebug::Error] + ": " + aText);
}

/// Where lines go. Who writes a line holds the lock for reading, so that SetSink() returns only
/// when nobody is inside the former sink any more. Never destroyed: threads log to the very end.
struct Output {
  Output() {
    initialise();
    // A child may be made while another thread writes a line.
    ::pthread_atfork(nullptr, nullptr, [] { get().initialise(); });
  }

  void initialise() {
    pthread_rwlockattr_t attributes;
    ::pthread_rwlockattr_init(&attributes);
    // Otherwise threads that log without a pause keep SetSink() out for ever.
    ::pthread_rwlockattr_setkind_np(&attributes, PTHREAD_RWLOCK_PREFER_WRITER_NONRECURSIVE_NP);
    ::pthread_rwlock_init(&lock, &attributes);
    ::pthread_rwlockattr_destroy(&attributes);
  }

  static Output& get() {
    static auto& output = *new Output;
    return output;
  }

  pthread_rwlock_t lock;
  // Guarded by lock.
  PCRealDebug::Sink sink = toStandardError;
  void* userData = nullptr;
};

thread_local bool theInSink = false;

void write(unsigned long aLevel, std::string const& aText) {
  Output& output = Output::get();
  ::pthread_rwlock_rdlock(&output.lock);
  theInSink = true;
  try {
    output.sink(aLevel, aText.c_str(), output.userData);
  } catch (...) {
    // There is nowhere left to report it.
  }
  theInSink = false;
  ::pthread_rwlock_unlock(&output.lock);
}

}  // namespace

std::atomic<unsigned> PCRealDebug::sLevels{bit(PCRealDebug::Error) | bit(PCRealDebug::Warning)};

// Leaves errno alone: failures are logged between a call and the look at its errno.
void PCRealDebug::Print(unsigned long aLevel, char const* aFormat, ...) {
  if (!Enabled(aLevel) || aFormat == nullptr || theInSink) {
    return;
  }
  int const error = errno;
  std::va_list arguments;
  va_start(arguments, aFormat);
  try {
    write(aLevel, LogFormat::Format(aFormat, arguments));
  } catch (std::exception const&) {
    // No memory for a line: the line is lost, the operation that wrote it goes on.
  }
  va_end(arguments);
  errno = error;
}

void PCRealDebug::SetLevel(Level aLevel) {
  unsigned levels = 0;
  for (Level const level : {Error, Warning, Notable, Detail, Trace}) {
    levels |= bit(level);
    if (level == aLevel) {
      break;
    }
  }
  sLevels.store(levels, std::memory_order_relaxed);
}

void PCRealDebug::Silence() {
  sLevels.store(0, std::memory_order_relaxed);
}

void PCRealDebug::SetSink(Sink aSink, void* aUserData) {
  Output& output = Output::get();
  ::pthread_rwlock_wrlock(&output.lock);
  output.sink = aSink != nullptr ? aSink : toStandardError;
  output.userData = aSink != nullptr ? aUserData : nullptr;
  ::pthread_rwlock_unlock(&output.lock);
}
