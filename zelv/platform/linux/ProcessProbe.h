#pragma once

#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <thread>

namespace Zelv::Platform::Testing {

/// What tests can see of their own process from outside.
class ProcessProbe {
 public:
  static int threads() {
    // The thread sanitizer starts a thread of its own beside the first one of the process; from
    // here on it is there and counts alike before and after.
    static bool const settled = startAndEndOneThread();
    return settled ? entries("/proc/self/task") : -1;
  }

  static int descriptors() { return entries("/proc/self/fd"); }

  /// The system takes a moment to strike a joined thread off its list. @return whether it came to
  /// this number within 20 seconds.
  static bool comesToThreads(int aCount) {
    return comesTo([aCount] { return threads() == aCount; });
  }

  static bool comesTo(std::function<bool()> const& aCondition) {
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!aCondition()) {
      if (std::chrono::steady_clock::now() > end) {
        return false;
      }
      std::this_thread::yield();
    }
    return true;
  }

  /// The address space in use, in bytes; every stack that is not given back counts in full.
  static long addressSpace() {
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * ::sysconf(_SC_PAGESIZE);
  }

 private:
  static bool startAndEndOneThread() {
    std::string own;
    std::thread([&own] { own = "/proc/self/task/" + std::to_string(::gettid()); }).join();
    return comesTo([&own] { return !std::filesystem::exists(own); });
  }

  static int entries(char const* aDirectory) {
    std::filesystem::directory_iterator const directory(aDirectory);
    return static_cast<int>(std::distance(begin(directory), end(directory)));
  }
};

}  // namespace Zelv::Platform::Testing
