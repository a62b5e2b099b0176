#pragma once

#include <sys/types.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

/// A zelv-tv of its own process, spoken to through pipes or as at a terminal. Each wait is bounded;
/// one that ends in vain fails the test and shows what came instead.
///
/// It runs in a network namespace of its own without any network, so that tests neither speak to
/// the home that the machine stands in nor meet each other.
class TvProcess {
 public:
  /// What its standard input and output are.
  enum class Channel { Pipes, Terminal };

  /// Starts it with these arguments; standard error goes to a file of the test's choice.
  TvProcess(std::vector<std::string> const& aArguments, std::string const& aLogFile,
            Channel aChannel = Channel::Pipes);
  TvProcess(TvProcess const&) = delete;
  TvProcess& operator=(TvProcess const&) = delete;
  /// One that still runs is to end in order now, and is killed if it does not; so what the
  /// sanitizers find at the end of a process fails the test.
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
  bool SaysNothingMore() { return Rest().empty(); }
  /// Waits for this text, wherever it stands, and takes all up to it and itself away.
  void WaitFor(std::string const& aText);
  /// All that it prints until its standard output ends.
  std::string Rest();

  /// Stops reading what it prints.
  void EndOutput();

  /// The directory that it works in.
  std::string WorkingDirectory() const;

  void Signal(int aSignal);
  /// Its exit status; nothing, with a failure, when it does not end or ends by a signal.
  std::optional<int> ExitStatus();

 private:
  /// Makes both ends of the channel; false if there are none.
  bool open(Channel aChannel, std::array<int, 2>& aChildEnds);
  void start(std::vector<std::string> const& aArguments, std::string const& aLogFile,
             std::array<int, 2> const& aChildEnds);
  bool readMore();

  pid_t mProcess = -1;
  int mInput = -1;
  int mOutput = -1;
  std::string mBytes;
};
