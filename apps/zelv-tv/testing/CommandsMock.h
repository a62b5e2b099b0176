#pragma once

#include <gmock/gmock.h>

#include <string>

#include "zelv/Zelv.h"

namespace ZelvTv {

class CommandsMock : public virtual Zelv::IAppCommand {
 public:
  using GUID = Zelv::GUID;

  MOCK_METHOD(GUID, executeCommand,
              (std::string const&, std::string const&, Zelv::IBaseCommandCallback*), (override));
  MOCK_METHOD(void, discardCommandCallback, (Zelv::IBaseCommandCallback*), (override));
  MOCK_METHOD(GUID, registerCommandHandler, (std::string const&, Zelv::IBaseCommandHandler*),
              (override));
  MOCK_METHOD(void, unregisterCommandHandler, (GUID const&), (override));
};

}  // namespace ZelvTv
