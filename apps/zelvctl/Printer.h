#pragma once

#include <mutex>
#include <vector>

#include "apps/zelvctl/KnownDevices.h"

namespace ZelvCtl {

/// Prints devices to standard output: aligned text for people, JSON for programs. From any thread.
class Printer {
 public:
  explicit Printer(bool aJson) : mJson(aJson) {}

  void list(std::vector<Device> const& aDevices);

  /// One line for an arrival or a departure, written out at once.
  void change(bool aArrived, Device const& aDevice);

 private:
  bool const mJson;
  std::mutex mLock;
};

}  // namespace ZelvCtl
