#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "apps/zelvctl/KnownDevices.h"
#include "apps/zelvctl/Output.h"

namespace ZelvCtl {

/// Prints devices: aligned text for people, JSON for programs. From any thread.
class Printer {
 public:
  /// @param aOut  outlives the object.
  Printer(std::ostream& aOut, bool aJson) : mOutput(aOut), mJson(aJson) {}

  /// As text one line a device, in JSON one array.
  void list(std::vector<Device> const& aDevices);

  /// One line for an arrival or a departure, written out at once.
  void change(bool aArrived, Device const& aDevice);

  /// True once something could not be written, as when nobody reads any more.
  bool isBroken() const { return mOutput.isBroken(); }

 private:
  Output mOutput;
  bool const mJson;
};

}  // namespace ZelvCtl
