#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace Zelv::Bench {

/// A fresh directory, gone with all that is in it at the end. Others may read what is in it: some
/// servers change their user.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "zelv-bench-XXXXXX").string();
    if (!mkdtemp(name.data())) {
      throw std::runtime_error("no temporary directory");
    }
    std::filesystem::permissions(name, std::filesystem::perms{0755});
    mPath = name + "/";
  }
  TemporaryDirectory(TemporaryDirectory const&) = delete;
  TemporaryDirectory& operator=(TemporaryDirectory const&) = delete;
  ~TemporaryDirectory() { std::filesystem::remove_all(mPath); }

  /// With a slash at its end.
  std::string const& path() const { return mPath; }

  /// @return the path of the file.
  std::string put(std::string const& aName, std::string const& aText) const {
    std::ofstream(mPath + aName) << aText;
    return mPath + aName;
  }

 private:
  std::string mPath;
};

}  // namespace Zelv::Bench
