#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

/// A zelv-tv of its own process, spoken to through pipes. Each wait is bounded; one that ends in
/// vain fails the test and shows what came instead.
class TvProcess {
 public:
  /// Starts it with these arguments; standard error goes to a file of the test's choice.
  TvProcess(std::vector<std::string> const& aArguments, std::string const& aLogFile);
  TvProcess(TvProcess const&) = delete;
  TvProcess& operator=(TvProcess const&) = delete;
  /// Kills it if it still runs.
  ~TvProcess();

  /// Writes one line.
  void Say(std::string const& aLine) { Write(aLine + "\n"); }
  /// Writes bytes as they are.
  void Write(std::string const& aBytes);
  /// Closes its standard input.
  void EndInput();

  /// The next line that it prints; empty, with a failure, when none comes.
  std::string Line();
  /// True if standard output ends without a further line.
  bool SaysNothingMore();

  /// Stops reading what it prints.
  void EndOutput();

  /// The directory that it works in.
  std::string WorkingDirectory() const;

  void Signal(int aSignal);
  /// Its exit status; nothing, with a failure, when it does not end or ends by a signal.
  std::optional<int> ExitStatus();

 private:
  bool readMore();

  pid_t mProcess = -1;
  int mInput = -1;
  int mOutput = -1;
  std::string mBytes;
};
