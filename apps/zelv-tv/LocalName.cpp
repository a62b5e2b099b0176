#include "apps/zelv-tv/LocalName.h"

#include <filesystem>
#include <stdexcept>

#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/infrastructure/ZelvFileUtil.h"
#include "zelv/platform/Directories.h"

namespace ZelvTv {

using Zelv::Infrastructure::HierarchicalDB;
using Zelv::Infrastructure::ZelvFileUtil;
using Zelv::Platform::Directories;

namespace {

char const* const kFile = "Devices.xml";
char const* const kPath = "/Devices/LocalTV/Name/text()";

[[noreturn]] void fail(std::string const& aReason) {
  throw std::runtime_error("--name: " + Directories::Writable() + kFile + aReason);
}

}  // namespace

void LocalName::Write(std::string const& aName) {
  std::string const path = Directories::Writable() + kFile;
  HierarchicalDB document;
  if (ZelvFileUtil::checkIsFileAvailable(kFile, Directories::Writable(), true) != 0 ||
      document.loadFromFile(path) != 0) {
    fail(" is not there and cannot be made");
  }
  std::string present;
  if (document.getContent(kPath, present) == 0 && present == aName) {
    return;
  }
  if (document.setContent(kPath, aName, false) != 0) {
    fail(" has no place for a name; start once without one to have the file repaired");
  }
  // Whole or not at all, as the library itself replaces the file.
  std::error_code error;
  if (document.saveToFile(path + ".tmp") == 0) {
    std::filesystem::rename(path + ".tmp", path, error);
    if (!error) {
      return;
    }
  }
  fail(" cannot be written");
}

}  // namespace ZelvTv
