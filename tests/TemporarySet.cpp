#include "tests/TemporarySet.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "zelv/Zelv.h"
#include "zelv/platform/Directories.h"

using Zelv::Platform::Directories;

TemporarySet::TemporarySet()
    : mReadOnlyBefore(Directories::ReadOnly()), mWritableBefore(Directories::Writable()) {
  std::string name = (std::filesystem::temp_directory_path() / "zelv-set.XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) {
    throw std::runtime_error("no temporary directory");
  }
  mRoot = name;
  mWritable = mRoot + "/data/";
  std::filesystem::copy(ZELV_TEST_FACTORY_FILES, mRoot + "/factory");
  Directories::Set(mRoot + "/factory/", mWritable);
}

TemporarySet::~TemporarySet() {
  Zelv::InterfaceFactory::terminate();
  Directories::Set(mReadOnlyBefore, mWritableBefore);
  std::error_code ignored;
  std::filesystem::remove_all(mRoot, ignored);
}
