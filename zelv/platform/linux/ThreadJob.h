#pragma once

#include <condition_variable>
#include <mutex>
#include <string>

namespace Zelv::Platform {

/// Work for one system thread, and the way to wait for its end.
class ThreadJob {
 public:
  explicit ThreadJob(char const* aName) : mName(aName) {}
  ThreadJob(ThreadJob const&) = delete;
  ThreadJob& operator=(ThreadJob const&) = delete;
  virtual ~ThreadJob() = default;

  std::string const& Name() const { return mName; }

  /// Waits until the work is done and its system thread is free for other work.
  void Wait();

  /// As Wait(), for at most this long. @return false when the time ran out.
  bool WaitFor(int aMilliseconds);

  /// True on the thread that does this work.
  bool IsCurrent() const;

  /// Takes the work back. @return false when it has begun already.
  bool Cancel();

  /// Does the work unless it was taken back. For the thread that was given it.
  void Perform();

  /// Lets those go on who wait. For the thread that was given the work, as its last use of it.
  void Finish();

 protected:
  /// The work. MUST NOT let an exception out.
  virtual void Run() = 0;

 private:
  bool begin();

  std::string const mName;
  std::mutex mLock;
  std::condition_variable mChanged;
  // Guarded by mLock.
  bool mBegun = false;
  bool mCancelled = false;
  bool mFinished = false;
};

}  // namespace Zelv::Platform
