#include "zelv/infrastructure/ZelvFileUtil.h"

#include <memory>

#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/platform/Directories.h"
#include "zelv/platform/PCFile.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/Shell.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv::Infrastructure {

namespace {

using Platform::Directories;
using Platform::Shell;

bool climbs(std::string const& aFile) {
  return ("/" + aFile + "/").find("/../") != std::string::npos;
}

/// Whether the two may stand in a line of the shell. They can come from a file that peers write, so
/// that "names of the system" is no promise. A directory must not read as an option, and a file
/// must lie below the directory.
bool mayReachShell(std::string const& aFile, std::string const& aDirectory) {
  return Shell::IsPlain(aFile) && Shell::IsPlain(aDirectory) && aDirectory[0] != '-' &&
         !climbs(aFile);
}

std::string pathOf(std::string aFile, std::string aDirectory) {
  ZelvFileUtil::normalizeFileParameter(aFile);
  ZelvFileUtil::normalizePathParameter(aDirectory);
  return aDirectory + aFile;
}

bool loads(HierarchicalDB& aDatabase, std::string const& aPath) {
  return aDatabase.loadFromFile(aPath) == 0 && aDatabase.isLoaded();
}

/// The entry and exit lines of checkIsFileAvailable stand at error level, so that a log of errors
/// alone shows which files were looked at.
int succeed() {
  PCRealDebug::Print(PCRealDebug::Error, "ZelvFileUtil::checkIsFileAvailable: Exit.");
  return 0;
}

int fail(char const* aFormat, std::string const& aFile) __attribute__((format(printf, 1, 0)));

int fail(char const* aFormat, std::string const& aFile) {
  PCRealDebug::Print(PCRealDebug::Error, "ZelvFileUtil::checkIsFileAvailable: Exit. (fail)");
  PCRealDebug::Print(PCRealDebug::Error, aFormat, aFile.c_str());
  return -1;
}

}  // namespace

int ZelvFileUtil::normalizePathParameter(std::string& aDirectory) {
  if (aDirectory.empty() || aDirectory.back() != '/') {
    aDirectory += '/';
  }
  return 0;
}

int ZelvFileUtil::normalizeFileParameter(std::string& aFile) {
  if (!aFile.empty() && aFile.front() == '/') {
    aFile.erase(0, 1);
  }
  return 0;
}

int ZelvFileUtil::checkIfFileExists(std::string const& aPath) {
  PCFile file;
  if (!file.Create(aPath.c_str(), 0)) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "ZelvFileUtil::checkIfFileExists: File does not exist!!!.");
    return -1;
  }
  file.Destroy();
  return 0;
}

int ZelvFileUtil::restoreFile(std::string const& aFile, std::string const& aDirectory) {
  TraceScope trace("ZelvFileUtil::restoreFile");
  if (!mayReachShell(aFile, aDirectory)) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "ZelvFileUtil::restoreFile: Invalid parameters for arguments!!!.");
    return -1;
  }
  std::string const source = pathOf(aFile, Directories::ReadOnly());
  if (checkIfFileExists(source) != 0) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "ZelvFileUtil::restoreFile: File doesn't exist in static folder!!!.");
    return -1;
  }
  std::string directory = aDirectory;
  normalizePathParameter(directory);
  Shell::Run("mkdir -m 777 -p " + directory);
  Shell::Run("cp -r " + source + " " + pathOf(aFile, directory));
  Shell::Run("sync");
  return 0;
}

int ZelvFileUtil::copyIfNotFound(std::string const& aFile, std::string const& aDirectory) {
  TraceScope trace("ZelvFileUtil::copyIfNotFound");
  if (aFile.empty() || aDirectory.empty()) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "ZelvFileUtil::copyIfNotFound: Invalid parameters for arguments!!!.");
    return -1;
  }
  if (checkIfFileExists(pathOf(aFile, aDirectory)) == 0) {
    return 0;
  }
  return restoreFile(aFile, aDirectory);
}

int ZelvFileUtil::checkIsFileAvailable(std::string const& aFile, std::string const& aDirectory,
                                       bool aValidate) {
  PCRealDebug::Print(PCRealDebug::Error, "ZelvFileUtil::checkIsFileAvailable: Entry.");
  PCRealDebug::Print(PCRealDebug::Notable,
                     "ZelvFileUtil::checkIsFileAvailable: Checking file '%s' in directory '%s'%s.",
                     aFile.c_str(), aDirectory.c_str(),
                     aValidate ? " and validating XML integrity" : "");
  if (copyIfNotFound(aFile, aDirectory) != 0) {
    return fail("ZelvFileUtil::checkIsFileAvailable: error!! file %s not found in r/o area!!!",
                aFile);
  }
  if (!aValidate) {
    return succeed();
  }
  auto const database = std::make_unique<HierarchicalDB>();
  std::string const path = pathOf(aFile, aDirectory);
  PCRealDebug::Print(PCRealDebug::Notable,
                     "ZelvFileUtil::checkIsFileAvailable: Validating XML.  Full path: '%s'",
                     path.c_str());
  if (loads(*database, path)) {
    return succeed();
  }
  if (restoreFile(aFile, aDirectory) != 0) {
    return fail(
        "ZelvFileUtil::checkIsFileAvailable: error!! file %s failed to restore from the r/o "
        "area!!!",
        aFile);
  }
  if (!loads(*database, path)) {
    return fail("ZelvFileUtil::checkIsFileAvailable: error!! file %s is corrupted!!! (xml check)",
                aFile);
  }
  PCRealDebug::Print(PCRealDebug::Notable,
                     "ZelvFileUtil::checkIsFileAvailable: File successfully restored!");
  return succeed();
}

}  // namespace Zelv::Infrastructure
