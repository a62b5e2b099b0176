#pragma once

#include <gmock/gmock.h>

#include <string>

#include "zelv/Zelv.h"

namespace ZelvTv {

class TreeMock : public virtual Zelv::IAppData {
 public:
  using GUID = Zelv::GUID;

  MOCK_METHOD(GUID, setData,
              (std::string const&, std::string const&, Zelv::IBaseDataCallback*, bool), (override));
  MOCK_METHOD(GUID, addData,
              (std::string const&, std::string const&, Zelv::IBaseDataCallback*, bool), (override));
  MOCK_METHOD(GUID, requestData,
              (std::string const&, Zelv::ContextInformation const*, Zelv::IBaseDataCallback*),
              (override));
  MOCK_METHOD(GUID, subscribeData,
              (std::string const&, Zelv::ContextInformation const*, Zelv::IBaseDataCallback*),
              (override));
  MOCK_METHOD(void, unsubscribeData, (GUID), (override));
};

}  // namespace ZelvTv
