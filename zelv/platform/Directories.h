#pragma once

#include <string>

#include "zelv/platform/Export.h"

namespace Zelv::Platform {

/// The set's two directories; nothing else in the library knows one.
class ZELV_EXPORT Directories {
 public:
  /// Where the factory files lie. With a final "/". "/mtd_appdata/Images_960x540/Quorl/" unless
  /// set.
  static std::string const& ReadOnly();

  /// Where the files lie that the library writes. With a final "/". "/mtd_rwarea/kor_config_data/"
  /// unless set.
  static std::string const& Writable();

  /// Sets both, which MUST be plain by Shell::IsPlain() if files are to be seeded and repaired; a
  /// missing final "/" is added, and an empty name is the current directory. A host program calls
  /// it before InterfaceFactory::initialize(), on the same thread; later calls are not seen by what
  /// is running.
  static void Set(std::string const& aReadOnly, std::string const& aWritable);
};

}  // namespace Zelv::Platform
