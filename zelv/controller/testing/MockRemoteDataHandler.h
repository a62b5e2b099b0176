#pragma once

#include <gmock/gmock.h>

#include <list>
#include <string>

#include "zelv/controller/RemoteDataHandler.h"

namespace Zelv::Controller::Testing {

class MockRemoteDataHandler : public virtual RemoteDataHandler {
 public:
  MOCK_METHOD(void, executeGetData,
              (GUID const&, std::string const&, ContextInformation const*, IBaseDataCallback*,
               bool),
              (override));
  MOCK_METHOD(void, executeSetData,
              (GUID const&, std::string const&, std::string const&, bool, IBaseDataCallback*, bool),
              (override));
  MOCK_METHOD(void, initialize, (), (override));
  MOCK_METHOD(void, terminate, (), (override));
  MOCK_METHOD(void, removeAllRemoteDeviceService, (), (override));
  MOCK_METHOD(void, terminateInactiveDeviceQueue, (std::list<std::string> const&), (override));
  MOCK_METHOD(void, removeInactiveDeviceSubscription, (std::list<std::string> const&), (override));
  MOCK_METHOD(void, onStatus, (StatusInformation const&, GUID const&), (override));
  MOCK_METHOD(void, onData,
              (std::string const&, std::string const&, ContextInformation const*, GUID const&),
              (override));
};

}  // namespace Zelv::Controller::Testing
