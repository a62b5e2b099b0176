#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "bench/TwoHosts.h"

namespace Zelv::Bench {

/// A program at the other host, which ends with this object and in any case with this process.
class Process {
 public:
  /// How it is told to end.
  enum class End { byInput, bySignal };

  /// @throws std::runtime_error when it cannot be started.
  Process(TwoHosts const& aHosts, std::vector<std::string> aArguments, End aEnd);
  Process(Process const&) = delete;
  Process& operator=(Process const&) = delete;
  ~Process();

  /// The next line that it prints.
  ///
  /// @throws std::runtime_error when there is none.
  std::string line();

  /// Writes a line to its input.
  void say(std::string const& aLine);

 private:
  void start(std::vector<std::string>& aArguments);

  End const mEnd;
  pid_t mProcess = 0;
  int mInput = -1;
  int mOutput = -1;
};

}  // namespace Zelv::Bench
