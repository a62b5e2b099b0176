#pragma once

#include <pthread.h>

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "zelv/platform/linux/ThreadJob.h"

namespace Zelv::Platform {

/// The system threads behind PCThread and the alarms. A new thread costs a third of a whole
/// exchange of messages, so a finished one is parked for a while and taken again.
class ThreadPool {
 public:
  /// How many finished threads are kept at most.
  static constexpr int cMostParked = 8;

  /// What every parked thread has. Above the 512 KiB that PCThread promises, since callbacks of
  /// applications run here; pages that nobody touches cost nothing.
  static constexpr std::size_t cStack = std::size_t{1024} * 1024;

  /// The one of the process. Its parked threads end with the process.
  static ThreadPool& Get();

  /// @param aIdleMs  how long a parked thread waits for work before it ends.
  explicit ThreadPool(int aIdleMs) : mIdleMs(aIdleMs) {}
  ThreadPool(ThreadPool const&) = delete;
  ThreadPool& operator=(ThreadPool const&) = delete;

  /// Every job MUST be finished.
  ~ThreadPool() { Close(); }

  /// Gives the work to a parked thread or to a new one of at least aStack bytes of stack.
  /// @return false when the system has no thread.
  bool Start(std::shared_ptr<ThreadJob> const& aJob, std::size_t aStack);

  /// Ends the parked threads and waits for them.
  void ReleaseParked();

  /// Waits for the end of threads that found no place to park. They have finished their work, so
  /// that this takes no time; it is only that somebody must do it.
  void JoinEnded();

  /// As ReleaseParked(), and no thread parks from now on.
  void Close();

  int ParkedCount();

  /// The names of the jobs that are being done.
  std::vector<std::string> Running();

 private:
  struct Worker;

  static void* main(void* aWorker);
  static void atFork();

  bool handToParked(std::shared_ptr<ThreadJob> const& aJob);
  void work(Worker& aSelf);
  bool park(Worker& aSelf);
  bool awaitJob(Worker& aSelf);
  void unpark(Worker& aWorker);
  void leave(Worker& aSelf, std::unique_lock<std::mutex>& aLock);
  void enlist(Worker& aWorker);
  void strike(Worker& aWorker);
  void strikeOff(Worker& aWorker);

  int const mIdleMs;

  std::mutex mLock;
  // Guarded by mLock.
  Worker* mParked = nullptr;
  int mParkedCount = 0;
  /// Every thread, at work or parked.
  Worker* mAll = nullptr;
  /// Those of the process that this one is a child of.
  Worker* mLost = nullptr;
  int mMostParked = cMostParked;
  /// A thread that ends lays its handle here and joins the one that lay there before. So at most
  /// one ended thread waits to be joined, and nobody need be told.
  pthread_t mEnded{};
  bool mHasEnded = false;
};

}  // namespace Zelv::Platform
