#pragma once

#include <string>

#include "zelv/infrastructure/GUID.h"
#include "zelv/platform/Export.h"

namespace Zelv::Infrastructure {

/// Cuts XPath strings as plain text, without parsing them: a "/" or a bracket between quotes counts
/// like any other. Each operation takes one pass over the text and may be called from any thread.
class ZELV_EXPORT XPath {
 public:
  /// The text before the first "/@", or all of it.
  static std::string removeAttributeStep(std::string const& aXPath);

  /// The text before the first "/text()", or all of it.
  static std::string removeTextStep(std::string const& aXPath);

  /// The text without its stretches from a "[" to the next "]", brackets included. A "[" without a
  /// "]" behind it stays, with all that follows.
  static std::string removePredicates(std::string const& aXPath);

  /// The text between the first "[" and the next "]" behind it, with the text before that "[" in
  /// aPrefix; if either bracket is missing, both are empty. aPrefix may be aXPath itself.
  static std::string getFirstPredicate(std::string const& aXPath, std::string& aPrefix);

  /// The text after the last "/"; empty if there is none.
  static std::string getLastStep(std::string const& aXPath);

  /// True for a path into this device's own tree: one that begins with "/Zelv/", or with "/Zelv", a
  /// DeviceId predicate that names aDeviceId in either kind of quotes, and "/". So "/Zelv" alone is
  /// not local.
  static bool isLocalXPath(std::string const& aXPath, GUID const& aDeviceId);
};

}  // namespace Zelv::Infrastructure
