#pragma once

#include <exception>
#include <string>

#include "zelv/platform/Export.h"

namespace Zelv {

/// What IBaseStatusCallback::onStatus() is told. A plain value, not an exception type.
class ZELV_EXPORT StatusInformation {
 public:
  /// Keeps the text; the exception is a plain std::exception.
  explicit StatusInformation(std::string const& aStatusText);

  /// Copies only the std::exception part and leaves the text empty: the message of what was thrown
  /// is lost. Receivers rely on an empty text from every failed transaction; the details stand in
  /// the log.
  explicit StatusInformation(std::exception const& aException);

  virtual ~StatusInformation();

  StatusInformation(StatusInformation const&) = default;
  StatusInformation& operator=(StatusInformation const&) = default;

  /// The text that this was made from; empty when it was made from an exception.
  std::string const& getStatusText() const { return mStatusText; }

  /// The std::exception part of the exception that this was made from.
  std::exception const& getException() const { return mException; }

 private:
  std::exception mException;
  std::string mStatusText;
};

}  // namespace Zelv
