#pragma once

#include <cstdint>
#include <functional>

namespace Zelv::Bench {

/// Two hosts on a cable, each with a network of its own: this process, and whatever it starts at
/// the other one. What is measured goes from one to the other and back, as in a home, so ports may
/// be fixed and nothing of the machine's own network is touched.
///
/// To be made before the process has a second thread; it stays where it was put.
class TwoHosts {
 public:
  static constexpr char const* cHere = "10.77.9.1";
  static constexpr char const* cThere = "10.77.9.2";

  /// @throws std::runtime_error when the machine does not permit it.
  TwoHosts();
  TwoHosts(TwoHosts const&) = delete;
  TwoHosts& operator=(TwoHosts const&) = delete;
  ~TwoHosts();

  /// The calling thread is at the other host meanwhile, and so is what is started then.
  void there(std::function<void()> const& aWork) const;

  /// Waits until somebody listens.
  ///
  /// @throws std::runtime_error when nobody does in a time that nothing healthy needs.
  static void waitForPort(char const* aAddress, std::uint16_t aPort);

 private:
  int mHere = -1;
  int mThere = -1;
};

}  // namespace Zelv::Bench
