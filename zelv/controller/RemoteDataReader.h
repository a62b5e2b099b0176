#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/infrastructure/URL.h"
#include "zelv/interfaces/GUID.h"

namespace Zelv::Controller {

/// One message of another device, read element by element. Elements are found by their names; one
/// that is missing reads as empty.
///
/// What cannot be made sense of gives nothing, with a line in the log in the name of the remote
/// data controller.
class RemoteDataReader {
 public:
  /// Longest path that another device may ask for: the tree answers no longer one.
  static constexpr std::size_t cPathLength = 2048;
  /// Longest identifier of another device, and longest address for its answers. Both are kept.
  static constexpr std::size_t cDeviceIdLength = 128;
  static constexpr std::size_t cUrlLength = 1024;

  explicit RemoteDataReader(std::string const& aMessage);

  /// False for a text that is no document; nothing else may be read then.
  bool isLoaded() { return mMessage.isLoaded(); }

  /// "OnData", "RequestData" and so on.
  std::string type();

  /// How the other device calls itself; any text.
  std::string senderId();
  /// The same for what is going to be kept.
  std::optional<std::string> boundedSenderId();

  /// Where answers go.
  std::optional<Infrastructure::URL> notifyTo();

  std::optional<GUID> transactionId();
  /// @param aType  that of the message.
  std::optional<GUID> subscriptionId(std::string const& aType);

  /// In the form for this device's own tree.
  std::optional<std::string> path(std::string const& aType);

  /// What an OnData tells.
  std::string value();
  /// What a SetData writes.
  std::optional<std::string> newValue();

 private:
  std::string read(std::string const& aXPath);

  Infrastructure::HierarchicalDB mMessage;
};

}  // namespace Zelv::Controller
