#pragma once

#include <string>

namespace ZelvCtl {

/// What was asked for on the command line.
struct Options {
  enum Verb { Devices };

  Verb verb = Devices;
  bool watch = false;
  bool json = false;
  double timeout = 3;  ///< seconds to wait for answers at most
  std::string address;
  std::string group = "239.255.44.46";
  std::string port = "4451";
  std::string name = "zelvctl";
  std::string id;
  int interval = 10;  ///< seconds between heartbeats

  /// Reads the arguments. @return true when there is work to do; otherwise aStatus is what to exit
  /// with, and help or one line on what is wrong has been printed.
  bool parse(int aCount, char const* const* aArguments, int& aStatus);
};

}  // namespace ZelvCtl
