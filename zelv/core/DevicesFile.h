#pragma once

#include <string>

namespace Zelv::Infrastructure {
class HierarchicalDB;
}

namespace Zelv {

/// "Devices.xml" in the set's writable directory: what it must hold for the set to start, and how
/// it is written.
class DevicesFile {
 public:
  static constexpr char const* Name = "Devices.xml";

  /// True when every element that the start relies on stands in the document once. Peers can remove
  /// any of them, or write a second one beside it.
  static bool isComplete(Infrastructure::HierarchicalDB& aDocument);

  /// A document that is not complete counts as corrupt: the factory file takes its place, here and
  /// on the storage, but the set stays who it was. Where the factory file is not complete either,
  /// the document stays as it is. Both are logged.
  static void repairIfIncomplete(Infrastructure::HierarchicalDB& aDocument);

  /// Whether a set can live under this text: it reads as a GUID other than the null one, and peers
  /// take it.
  static bool isIdentity(std::string const& aText);

  /// Puts the document in the place of the file, in one step, and forces it to the storage. False
  /// when it could not be written; the file is then as it was, and nothing is left beside it.
  static bool save(Infrastructure::HierarchicalDB& aDocument);
};

}  // namespace Zelv
