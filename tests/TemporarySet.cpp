#include "tests/TemporarySet.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "zelv/Zelv.h"
#include "zelv/platform/Directories.h"

using Zelv::Platform::Directories;

namespace {

/// The tests of one machine would find each other, and speak on its network.
void switchDiscoveryOff(std::string const& aPath) {
  std::string const on = "<ZelvDiscovery>true<";
  std::stringstream text;
  text << std::ifstream(aPath).rdbuf();
  std::string file = text.str();
  std::size_t const at = file.find(on);
  if (at == std::string::npos) {
    throw std::runtime_error("the factory file does not switch discovery on");
  }
  std::ofstream(aPath) << file.replace(at, on.size(), "<ZelvDiscovery>false<");
}

}  // namespace

TemporarySet::TemporarySet()
    : mReadOnlyBefore(Directories::ReadOnly()), mWritableBefore(Directories::Writable()) {
  std::string name = (std::filesystem::temp_directory_path() / "zelv-set.XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) {
    throw std::runtime_error("no temporary directory");
  }
  mRoot = name;
  mWritable = mRoot + "/data/";
  std::filesystem::copy(ZELV_TEST_FACTORY_FILES, mRoot + "/factory");
  switchDiscoveryOff(mRoot + "/factory/Configuration.xml");
  Directories::Set(mRoot + "/factory/", mWritable);
}

TemporarySet::~TemporarySet() {
  Zelv::InterfaceFactory::terminate();
  Directories::Set(mReadOnlyBefore, mWritableBefore);
  std::error_code ignored;
  std::filesystem::remove_all(mRoot, ignored);
}
