#pragma once

#include <cstdint>
#include <string>

#include "zelv/interfaces/GUID.h"

namespace Zelv::Controller {

/// One input event: a key, a text or a gesture of somebody with a device in the hand. A value.
class UserInput {
 public:
  /// With a new id, at the present time.
  UserInput(std::string const& aType, std::string const& aValue, std::string const& aDevice,
            std::string const& aUser);

  /// Reads an "OnInput" document. One that does not load, or names no user, gives an event of empty
  /// texts with the null id and no time, and a line in the log; of a missing type, value or device
  /// the text is empty.
  explicit UserInput(std::string const& aInputString);

  GUID const& getId() const { return mId; }

  /// What subscribers choose by.
  std::string const& getType() const { return mType; }

  /// May hold markup.
  std::string const& getValue() const { return mValue; }

  /// The device and its user, as the message names them.
  std::string const& getDevice() const { return mDevice; }
  std::string const& getUser() const { return mUser; }

  /// When it was made, in seconds since 1970; lasts until 2106.
  std::uint32_t getTime() const { return mTime; }

 private:
  /// 0, or -1 when the event is to stay empty.
  int parseInputString(std::string const& aInputString);
  void stamp();

  GUID mId;
  std::string mType;
  std::string mValue;
  std::string mDevice;
  std::string mUser;
  std::uint32_t mTime = 0;
};

}  // namespace Zelv::Controller
