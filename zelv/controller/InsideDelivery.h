#pragma once

namespace Zelv::Controller {

/// Marks, for a scope, that the calling thread tells a subscriber of the tree of something, which
/// it does under the lock of the subscriptions.
///
/// Whoever waits for another thread asks here first: that one may be about to use the tree, and the
/// two would wait for each other for ever.
class InsideDelivery {
 public:
  InsideDelivery() { ++sDepth; }
  InsideDelivery(InsideDelivery const&) = delete;
  InsideDelivery& operator=(InsideDelivery const&) = delete;
  ~InsideDelivery() { --sDepth; }

  static bool isThisThread() { return sDepth > 0; }

 private:
  /// A subscriber may change what others are told of within.
  static inline thread_local int sDepth = 0;
};

}  // namespace Zelv::Controller
