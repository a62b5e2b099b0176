#include "zelv/platform/fake/ShellLines.h"

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <system_error>

namespace Zelv::Platform::Fake {
namespace {

namespace fs = std::filesystem;

constexpr int cFailed = 1;
constexpr int cNotFound = 127;

std::vector<std::string> split(std::string const& aText, char aSeparator) {
  std::vector<std::string> parts;
  std::istringstream stream(aText);
  for (std::string part; std::getline(stream, part, aSeparator);) {
    if (!part.empty()) {
      parts.push_back(part);
    }
  }
  return parts;
}

bool copyOne(fs::path const& aFrom, fs::path const& aTo, bool aDeep) {
  if (fs::is_directory(aFrom) && !aDeep) {
    return false;
  }
  fs::path const name = aFrom.has_filename() ? aFrom.filename() : aFrom.parent_path().filename();
  std::error_code error;
  fs::copy(aFrom, fs::is_directory(aTo) ? aTo / name : aTo,
           fs::copy_options::recursive | fs::copy_options::overwrite_existing, error);
  return !error;
}

}  // namespace

int ShellLines::perform(std::string const& aLine) {
  int status = 0;
  for (std::string const& command : split(aLine, ';')) {
    Words const words = split(command, ' ');
    if (!words.empty()) {
      status = performCommand(words);
    }
  }
  return status;
}

int ShellLines::performCommand(Words const& aWords) {
  if (aWords[0] == "sync") {
    return 0;
  }
  if (aWords[0] == "mkdir") {
    return makeDirectory(aWords);
  }
  if (aWords[0] == "cp") {
    return copy(aWords);
  }
  if (aWords[0] == "cd") {
    return changeDirectory(aWords);
  }
  if (aWords[0] == "chmod") {
    return changeMode(aWords);
  }
  return cNotFound;
}

// As "mkdir -m 777 -p": the mode is for the last directory alone, and only if it is new.
int ShellLines::makeDirectory(Words const& aWords) const {
  if (aWords.size() != 5 || aWords[1] != "-m" || aWords[2] != "777" || aWords[3] != "-p" ||
      !isOurs(aWords[4])) {
    return cFailed;
  }
  std::error_code error;
  if (fs::is_directory(aWords[4])) {
    return 0;
  }
  fs::create_directories(aWords[4], error);
  if (!error) {
    fs::permissions(aWords[4], fs::perms::all, error);
  }
  return error ? cFailed : 0;
}

int ShellLines::copy(Words const& aWords) const {
  bool const deep = aWords.size() > 1 && aWords[1] == "-r";
  Words paths;
  for (auto word = aWords.begin() + (deep ? 2 : 1); word != aWords.end(); ++word) {
    Words const expanded = expand(*word);
    paths.insert(paths.end(), expanded.begin(), expanded.end());
  }
  if (paths.size() < 2 || !std::all_of(paths.begin(), paths.end(),
                                       [this](std::string const& path) { return isOurs(path); })) {
    return cFailed;
  }
  std::string const target = paths.back();
  paths.pop_back();
  if (paths.size() > 1 && !fs::is_directory(target)) {
    return cFailed;
  }
  int status = 0;
  for (std::string const& path : paths) {
    status = copyOne(path, target, deep) ? status : cFailed;
  }
  return status;
}

int ShellLines::changeDirectory(Words const& aWords) {
  if (aWords.size() != 2 || !isOurs(aWords[1]) || !fs::is_directory(aWords[1])) {
    return cFailed;
  }
  mDirectory = aWords[1];
  return 0;
}

// "chmod 777 *" where "cd" went; with no file there the star stays a star, and no file has that
// name.
int ShellLines::changeMode(Words const& aWords) const {
  if (aWords.size() != 3 || aWords[1] != "777" || aWords[2] != "*" || mDirectory.empty()) {
    return cFailed;
  }
  int status = 0;
  for (std::string const& path : expand(mDirectory + "/*")) {
    std::error_code error;
    fs::permissions(path, fs::perms::all, error);
    status = error ? cFailed : status;
  }
  return status;
}

bool ShellLines::isOurs(std::string const& aPath) const {
  std::string const path = fs::path(aPath).lexically_normal().string();
  return !mRoot.empty() && path.compare(0, mRoot.size(), mRoot) == 0;
}

// A final star alone, and as a shell does it: hidden files are left out, the rest is sorted.
ShellLines::Words ShellLines::expand(std::string const& aPattern) const {
  std::error_code error;
  Words found;
  if (aPattern.size() > 1 && aPattern.compare(aPattern.size() - 2, 2, "/*") == 0) {
    std::string const directory = aPattern.substr(0, aPattern.size() - 1);
    for (auto const& entry : fs::directory_iterator(directory, error)) {
      std::string const name = entry.path().filename().string();
      if (name[0] != '.') {
        found.push_back(directory + name);
      }
    }
  }
  if (found.empty()) {
    return {aPattern};
  }
  std::sort(found.begin(), found.end());
  return found;
}

}  // namespace Zelv::Platform::Fake
