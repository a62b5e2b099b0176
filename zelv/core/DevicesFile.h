#pragma once

namespace Zelv::Infrastructure {
class HierarchicalDB;
}

namespace Zelv {

/// What "Devices.xml" must hold for the set to start.
class DevicesFile {
 public:
  /// True when every element that the start relies on is there.
  static bool isComplete(Infrastructure::HierarchicalDB& aDocument);

  /// A file that parses and lacks a required element counts as corrupt: it is restored from the
  /// factory file and loaded again. Where that fails too, the document stays as it is and the
  /// failure is logged.
  static void repairIfIncomplete(Infrastructure::HierarchicalDB& aDocument);
};

}  // namespace Zelv
