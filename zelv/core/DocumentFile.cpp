#include "zelv/core/DocumentFile.h"

#include "zelv/platform/DurableFile.h"
#include "zelv/platform/PCRealDebug.h"

namespace Zelv {

using Platform::DurableFile;

bool DocumentFile::save(Infrastructure::HierarchicalDB& aDocument, std::string const& aPath,
                        char const* aOperation) {
  std::string const temporary = aPath + ".tmp";
  if (aDocument.saveToFile(temporary) != 0) {
    DurableFile::Remove(temporary);
    return false;
  }
  if (!DurableFile::Replace(temporary, aPath)) {
    PCRealDebug::Print(PCRealDebug::Error, "%s: File '%s' could not be replaced.", aOperation,
                       aPath.c_str());
    DurableFile::Remove(temporary);
  }
  return true;
}

}  // namespace Zelv
