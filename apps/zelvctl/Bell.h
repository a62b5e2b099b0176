#pragma once

namespace ZelvCtl {

/// Wakes the main thread, which waits for descriptors, from any other.
class Bell {
 public:
  Bell();
  Bell(Bell const&) = delete;
  Bell& operator=(Bell const&) = delete;
  ~Bell();

  void ring();

  /// Makes the descriptor unreadable. @return whether the bell was rung.
  bool answer();

  /// Readable for poll() from ring() to answer().
  int descriptor() const { return mDescriptor; }

 private:
  int mDescriptor;
};

}  // namespace ZelvCtl
