#pragma once

#include <functional>
#include <string>

#include "bench/Process.h"
#include "bench/TemporaryDirectory.h"
#include "bench/TwoHosts.h"

struct sd_bus;

namespace Zelv::Bench {

/// D-Bus over TCP: a bus at the other host, and a program there that answers calls.
class BusPeer {
 public:
  /// Calls of so many bytes, and answers.
  static constexpr int cSize = 600;

  explicit BusPeer(TwoHosts const& aHosts);
  BusPeer(BusPeer const&) = delete;
  BusPeer& operator=(BusPeer const&) = delete;
  ~BusPeer();

  bool call();

  /// What the program at the other host does until its input ends.
  static int answer(std::string const& aAddress, std::function<void()> const& aReady);

 private:
  std::string const mText;
  TemporaryDirectory mDirectory;
  Process mDaemon;
  std::string const mAddress;
  Process mService;
  sd_bus* mBus = nullptr;
};

}  // namespace Zelv::Bench
