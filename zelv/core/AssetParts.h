#pragma once

#include <list>
#include <string>

#include "zelv/core/AssetFileObject.h"

namespace Zelv {

/// An open response that parts are added to: what the answering of asset requests sees of a
/// connection.
///
/// Called on the thread of the connection alone. A part that cannot be sent does not end the
/// exchange, and nobody looks at the results. What is thrown ends it: a response that was given up
/// throws std::runtime_error from each operation, and whoever answers lets that one pass in the
/// end.
class AssetParts {
 public:
  /// Adds a part of text. @param aLast has no effect. @return whether it was sent.
  virtual bool sendText(std::string const& aText, bool aLast) = 0;

  /// Adds a part for each file, in order, up to the first that cannot be sent.
  ///
  /// @param aFiles  not empty.
  /// @param aLast   whether these are the last parts of the response.
  /// @return whether all were sent.
  virtual bool sendFiles(std::list<AssetFileObject> const& aFiles, bool aLast) = 0;

 protected:
  /// Nobody deletes a response through this interface.
  ~AssetParts() = default;
};

}  // namespace Zelv
