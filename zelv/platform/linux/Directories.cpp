#include "zelv/platform/Directories.h"

namespace Zelv::Platform {
namespace {

// Never destroyed: threads that end late in the process still ask for them.
std::string& readOnly() {
  static auto& directory = *new std::string("/mtd_appdata/Images_960x540/Quorl/");
  return directory;
}

std::string& writable() {
  static auto& directory = *new std::string("/mtd_rwarea/kor_config_data/");
  return directory;
}

// An empty name is the current directory; without the dot it would become the root.
std::string closed(std::string const& aDirectory) {
  if (aDirectory.empty()) {
    return "./";
  }
  return aDirectory.back() == '/' ? aDirectory : aDirectory + '/';
}

}  // namespace

std::string const& Directories::ReadOnly() {
  return readOnly();
}

std::string const& Directories::Writable() {
  return writable();
}

void Directories::Set(std::string const& aReadOnly, std::string const& aWritable) {
  std::string newReadOnly = closed(aReadOnly);
  std::string newWritable = closed(aWritable);
  readOnly().swap(newReadOnly);
  writable().swap(newWritable);
}

}  // namespace Zelv::Platform
