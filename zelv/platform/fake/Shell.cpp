#include "zelv/platform/Shell.h"

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <utility>

#include "zelv/platform/Directories.h"
#include "zelv/platform/fake/FakeShell.h"
#include "zelv/platform/fake/ShellLines.h"
#include "zelv/platform/fake/TemporaryDirectories.h"
#include "zelv/platform/linux/ShellText.h"

namespace Zelv::Platform {
namespace {

using Fake::FakeShell;

std::mutex theLock;
// Guarded by theLock.
FakeShell::Mode theMode = FakeShell::Perform;
std::vector<std::string> theLines;
std::vector<std::pair<std::string, int>> theFaults;

}  // namespace

int Shell::Run(std::string const& aLine) {
  if (!ShellText::Accept(aLine)) {
    return -1;
  }
  std::lock_guard lock(theLock);
  theLines.push_back(aLine);
  for (auto const& [part, status] : theFaults) {
    if (aLine.find(part) != std::string::npos) {
      return status;
    }
  }
  if (theMode == FakeShell::RecordOnly) {
    return 0;
  }
  if (aLine == "sync") {
    return std::filesystem::is_directory(Directories::Writable()) ? 0 : -1;
  }
  return Fake::ShellLines(Fake::TemporaryDirectories::currentRoot()).perform(aLine);
}

namespace Fake {

void FakeShell::SetMode(Mode aMode) {
  std::lock_guard lock(theLock);
  theMode = aMode;
}

void FakeShell::FailLinesWith(std::string const& aPart, int aStatus) {
  std::lock_guard lock(theLock);
  theFaults.emplace_back(aPart, aStatus);
}

std::vector<std::string> FakeShell::Lines() {
  std::lock_guard lock(theLock);
  return theLines;
}

int FakeShell::Count(std::string const& aLine) {
  std::lock_guard lock(theLock);
  return static_cast<int>(std::count(theLines.begin(), theLines.end(), aLine));
}

void FakeShell::ClearLines() {
  std::lock_guard lock(theLock);
  theLines.clear();
}

void FakeShell::Reset() {
  std::lock_guard lock(theLock);
  theMode = Perform;
  theLines.clear();
  theFaults.clear();
}

}  // namespace Fake
}  // namespace Zelv::Platform
