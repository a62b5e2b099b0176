#include "zelv/platform/fake/TemporaryDirectories.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>
#include <stdexcept>

#include "zelv/platform/Directories.h"
#include "zelv/platform/fake/Fakes.h"

namespace Zelv::Platform::Fake {
namespace {

namespace fs = std::filesystem;

std::mutex theLock;
// Guarded by theLock.
std::string theRoot;

void setRoot(std::string const& aRoot) {
  std::lock_guard lock(theLock);
  theRoot = aRoot;
}

// In memory where there is such a place: tests save often, and each save waits for the storage.
std::string makeRoot() {
  for (char const* const parent : {"/dev/shm", "/tmp"}) {
    std::string root = std::string(parent) + "/zelv-XXXXXX";
    if (::mkdtemp(root.data()) != nullptr) {
      return root + '/';
    }
  }
  throw std::runtime_error("TemporaryDirectories: no place for a directory");
}

void put(std::string const& aPath, std::string const& aContent) {
  fs::create_directories(fs::path(aPath).parent_path());
  std::ofstream file(aPath, std::ios::binary | std::ios::trunc);
  file << aContent;
  file.close();
  if (!file) {
    throw std::runtime_error("TemporaryDirectories: cannot write " + aPath);
  }
}

}  // namespace

TemporaryDirectories::TemporaryDirectories()
    : mRoot(makeRoot()), mReadOnly(mRoot + "factory/"), mWritable(mRoot + "state/") {
  fs::create_directory(mReadOnly);
  fs::create_directory(mWritable);
  ResetFakes();
  setRoot(mRoot);
  Directories::Set(mReadOnly, mWritable);
}

TemporaryDirectories::~TemporaryDirectories() {
  Directories::Set("/mtd_appdata/Images_960x540/Quorl/", "/mtd_rwarea/kor_config_data/");
  setRoot("");
  ResetFakes();
  std::error_code ignored;
  fs::remove_all(mRoot, ignored);
}

std::string TemporaryDirectories::currentRoot() {
  std::lock_guard lock(theLock);
  return theRoot;
}

void TemporaryDirectories::putReadOnly(std::string const& aName,
                                       std::string const& aContent) const {
  put(mReadOnly + aName, aContent);
}

void TemporaryDirectories::putWritable(std::string const& aName,
                                       std::string const& aContent) const {
  put(mWritable + aName, aContent);
}

std::string TemporaryDirectories::getWritable(std::string const& aName) const {
  std::ifstream file(mWritable + aName, std::ios::binary);
  if (!file) {
    throw std::runtime_error("TemporaryDirectories: there is no " + mWritable + aName);
  }
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

bool TemporaryDirectories::hasWritable(std::string const& aName) const {
  return fs::exists(mWritable + aName);
}

std::vector<std::string> TemporaryDirectories::listWritable() const {
  std::vector<std::string> names;
  if (fs::is_directory(mWritable)) {
    for (auto const& entry : fs::directory_iterator(mWritable)) {
      names.push_back(entry.path().filename().string());
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

void TemporaryDirectories::removeWritable(std::string const& aName) const {
  fs::remove(mWritable + aName);
}

void TemporaryDirectories::removeWritableDirectory() const {
  fs::remove_all(mWritable);
}

void TemporaryDirectories::fillReadOnlyFrom(std::string const& aDirectory) const {
  fs::copy(aDirectory, mReadOnly,
           fs::copy_options::recursive | fs::copy_options::overwrite_existing);
}

}  // namespace Zelv::Platform::Fake
