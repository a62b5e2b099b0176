#pragma once

namespace Zelv::Platform::Fake {

/// A network of the test's own while it lives, with nothing in it but the loopback interface: for
/// tests of services whose ports are fixed, so that they run beside each other and beside whatever
/// the machine serves.
///
/// Belongs to the thread that makes it and to the threads started from it, those of PCThread
/// included; threads that are there already stay where they are. Where the machine does not permit
/// one, the test runs on the machine's network, but one such test at a time.
class OwnNetwork {
 public:
  OwnNetwork();
  OwnNetwork(OwnNetwork const&) = delete;
  OwnNetwork& operator=(OwnNetwork const&) = delete;
  ~OwnNetwork();

  /// False where it is the machine's.
  bool isOwn() const { return mOwn; }

 private:
  bool mOwn;
  /// The network to go back to, or the lock file; -1 without either.
  int mDescriptor = -1;
};

}  // namespace Zelv::Platform::Fake
