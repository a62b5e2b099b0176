#pragma once

#include <string>

#include "zelv/infrastructure/HierarchicalDB.h"

namespace Zelv {

/// The file of a document that a provider keeps.
class DocumentFile {
 public:
  DocumentFile() = delete;

  /// Saves through a temporary file, so that the file stays whole if the set goes down meanwhile.
  ///
  /// That the temporary file could not take the place of the other is only logged: it has never
  /// stopped a set, and subscribers are told of the change all the same.
  ///
  /// @param aOperation  class and operation, for the log.
  /// @return false when the document could not be written; the file is as it was.
  static bool save(Infrastructure::HierarchicalDB& aDocument, std::string const& aPath,
                   char const* aOperation);
};

}  // namespace Zelv
