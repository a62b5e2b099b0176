#pragma once

namespace Zelv::Platform {

/// While one lives, the C library reads and writes numbers on this thread with a point, whatever
/// locale the application has set; all else of the locale may change with it. For libraries that
/// read numbers by strtod(). MUST cost no more than a few function calls, and MUST NOT touch other
/// threads. Lives and dies on one thread, in the order of a stack.
class PlainNumbers {
 public:
  PlainNumbers();
  PlainNumbers(PlainNumbers const&) = delete;
  PlainNumbers& operator=(PlainNumbers const&) = delete;
  ~PlainNumbers();

 private:
  void* mFormer;
};

}  // namespace Zelv::Platform
