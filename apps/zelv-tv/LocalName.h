#pragma once

#include <string>

namespace ZelvTv {

/// What the set is called.
class LocalName {
 public:
  /// Writes the name into the set's own file of devices, making that file first where it is missing
  /// or broken.
  ///
  /// MUST be called with the directories set and before the library starts: the first message that
  /// a set sends of itself goes out before the tree takes a write. Throws std::runtime_error when
  /// the name cannot be stored.
  static void Write(std::string const& aName);
};

}  // namespace ZelvTv
