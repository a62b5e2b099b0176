#pragma once

#include <string>
#include <vector>

namespace Zelv::Platform::Fake {

/// Performs the shell lines that the system uses, without a shell, below one directory alone.
class ShellLines {
 public:
  /// @param aRoot  the only place that lines may read or change; with an empty one all fail.
  explicit ShellLines(std::string const& aRoot) : mRoot(aRoot) {}

  /// @return the exit status that a shell would give.
  int perform(std::string const& aLine);

 private:
  using Words = std::vector<std::string>;

  int performCommand(Words const& aWords);
  int makeDirectory(Words const& aWords) const;
  int copy(Words const& aWords) const;
  int changeMode(Words const& aWords) const;
  int changeDirectory(Words const& aWords);
  bool isOurs(std::string const& aPath) const;
  Words expand(std::string const& aPattern) const;

  std::string const mRoot;
  std::string mDirectory;
};

}  // namespace Zelv::Platform::Fake
