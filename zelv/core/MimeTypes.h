#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/platform/PCMutex.h"

namespace Zelv {

/// The types of files by their extension, from "Mime.xml" in the writable directory. The root
/// element is "mimetypes"; each element "mime" in it has the type as its text and the extension, in
/// lower case, as its attribute "extension".
///
/// Shared by all connections of a listener, from any thread.
class MimeTypes {
 public:
  /// How long a file that could not be had is not looked for again, in milliseconds: each try may
  /// run commands of the shell.
  static constexpr std::int64_t cRetryAfter = 10000;

  /// Makes sure that the file is there, repairing it where need be, and reads it; once, whoever
  /// asks first. @return false when there is none.
  bool load();

  /// @param aExtension  in lower case. One with characters that mean something in an expression has
  ///                    no type.
  /// @return 0, or a negative number with aType empty.
  int find(std::string const& aExtension, std::string& aType);

 private:
  PCMutex mLock;
  std::shared_ptr<Infrastructure::HierarchicalDB> mTypes ZELV_GUARDED_BY(mLock);
  bool mFailed ZELV_GUARDED_BY(mLock) = false;
  std::int64_t mFailedAt ZELV_GUARDED_BY(mLock) = 0;
};

}  // namespace Zelv
