#pragma once

#include <string>

namespace Zelv::Platform {

/// Names of classes for people to read.
class TypeName {
 public:
  /// @param aName  what std::type_info::name() gave. Other texts come back as they are, and so does
  ///               a name that the compiler's runtime cannot make readable.
  static std::string Of(std::string const& aName);
};

}  // namespace Zelv::Platform
