#include "zelv/platform/linux/LockOrder.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <mutex>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "zelv/platform/PCRealDebug.h"

namespace Zelv::Platform {

namespace {

using Lock = void const*;

/// What a thread holds, in the order of taking. Without memory from the heap, so that a lock that
/// nobody else wants still costs no call into the kernel.
struct Held {
  std::array<Lock, 64> locks;
  std::size_t count = 0;
};

thread_local Held theHeld;

/// Which locks were taken while which one was held.
class Graph {
 public:
  /// False when aAfter comes, by what is known, before aBefore.
  bool add(Lock aBefore, Lock aAfter) {
    std::lock_guard<std::mutex> const lock(mMutex);
    if (!mAfter[aBefore].insert(aAfter).second) {
      return true;
    }
    return !leads(aAfter, aBefore);
  }

  void remove(Lock aLock) {
    std::lock_guard<std::mutex> const lock(mMutex);
    mAfter.erase(aLock);
    for (auto& entry : mAfter) {
      entry.second.erase(aLock);
    }
  }

 private:
  bool leads(Lock aFrom, Lock aTo) const {
    std::unordered_set<Lock> seen{aFrom};
    std::vector<Lock> open{aFrom};
    while (!open.empty()) {
      Lock const lock = open.back();
      open.pop_back();
      if (lock == aTo) {
        return true;
      }
      auto const after = mAfter.find(lock);
      if (after == mAfter.end()) {
        continue;
      }
      for (Lock const next : after->second) {
        if (seen.insert(next).second) {
          open.push_back(next);
        }
      }
    }
    return false;
  }

  std::mutex mMutex;
  std::unordered_map<Lock, std::unordered_set<Lock>> mAfter;
};

/// Never deleted: locks of static objects go after everything else.
Graph& graph() {
  static Graph* const theGraph = new Graph;
  return *theGraph;
}

void endProcess(Lock aHeld, Lock aTaken) {
  PCRealDebug::Print(PCRealDebug::Error,
                     "PCMutex::Lock: %p is taken while %p is held, and elsewhere the other way "
                     "round.",
                     aTaken, aHeld);
  std::abort();
}

std::atomic<LockOrder::Handler> theHandler{endProcess};

}  // namespace

void LockOrder::Taking(void const* aLock) {
  for (std::size_t i = 0; i < theHeld.count; ++i) {
    if (!graph().add(theHeld.locks[i], aLock)) {
      theHandler.load()(theHeld.locks[i], aLock);
    }
  }
}

void LockOrder::Taken(void const* aLock) {
  if (theHeld.count < theHeld.locks.size()) {
    theHeld.locks[theHeld.count++] = aLock;
  }
}

void LockOrder::Released(void const* aLock) {
  auto* const end = theHeld.locks.begin() + theHeld.count;
  auto* const found = std::find(theHeld.locks.begin(), end, aLock);
  if (found != end) {
    std::copy(found + 1, end, found);
    --theHeld.count;
  }
}

void LockOrder::Gone(void const* aLock) {
  graph().remove(aLock);
}

LockOrder::Handler LockOrder::SetHandler(Handler aHandler) {
  return theHandler.exchange(aHandler);
}

}  // namespace Zelv::Platform
