#pragma once

#include <list>
#include <string>

#include "zelv/interfaces/IDataProvider.h"

namespace Zelv {

/// The discoveries that know the remote devices. They know nothing of each other.
class MultiDeviceSources {
 public:
  /// Asks each source, in order, and joins what is not empty as a multi-string. A device that two
  /// of them know stands in it twice. What a source returns is not looked at; what it throws goes
  /// to the caller.
  static std::string read(std::list<IDataProvider*> const& aSources, std::string const& aXPath,
                          GUID const& aTransactionID);
};

}  // namespace Zelv
