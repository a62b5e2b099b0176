#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace ZelvCtl {

/// A directory for one test, which goes with all that is in it.
class TemporaryFolder {
 public:
  TemporaryFolder() : mPath((std::filesystem::temp_directory_path() / "zelvctl-XXXXXX").string()) {
    if (::mkdtemp(mPath.data()) == nullptr) {
      throw std::runtime_error("no directory for a test");
    }
  }
  TemporaryFolder(TemporaryFolder const&) = delete;
  TemporaryFolder& operator=(TemporaryFolder const&) = delete;
  ~TemporaryFolder() { std::filesystem::remove_all(mPath); }

  std::string const& path() const { return mPath; }
  std::string path(std::string const& aName) const { return mPath + "/" + aName; }

  std::string read(std::string const& aName) const {
    std::ifstream stream(path(aName), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  void write(std::string const& aName, std::string const& aBytes) const {
    std::ofstream(path(aName), std::ios::binary) << aBytes;
  }

  /// All that is there, sorted.
  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(mPath)) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

 private:
  std::string mPath;
};

}  // namespace ZelvCtl
