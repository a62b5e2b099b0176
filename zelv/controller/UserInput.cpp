#include "zelv/controller/UserInput.h"

#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/PCTime.h"

namespace Zelv::Controller {

namespace {

/// What a document holds, before it is known whether it counts.
struct Fields {
  std::string type;
  std::string value;
  std::string device;
  std::string user;
};

/// The last field alone decides: phones that leave out the user's name have always been refused,
/// and those that leave out anything else have always been heard.
int read(std::string const& aInputString, Fields& aFields) {
  Infrastructure::HierarchicalDB document(Infrastructure::HierarchicalDB::OfOneThread{});
  document.loadFromString(aInputString);
  document.getContent("/OnInput/Type/text()", aFields.type);
  document.getContent("/OnInput/Value/node()", aFields.value);
  document.getContent("/OnInput/DeviceGuid/text()", aFields.device);
  return document.getContent("/OnInput/UserNickname/text()", aFields.user);
}

}  // namespace

UserInput::UserInput(std::string const& aType, std::string const& aValue,
                     std::string const& aDevice, std::string const& aUser)
    : mType(aType), mValue(aValue), mDevice(aDevice), mUser(aUser) {
  stamp();
}

UserInput::UserInput(std::string const& aInputString) {
  if (parseInputString(aInputString) != 0) {
    PCRealDebug::Print(PCRealDebug::Error, "UserInput::UserInput: Error in parsing user inputs.");
    return;
  }
  PCRealDebug::Print(PCRealDebug::Detail,
                     "UserInput::UserInput: type='%s', value='%s', device='%s', user='%s'",
                     mType.c_str(), mValue.c_str(), mDevice.c_str(), mUser.c_str());
  stamp();
}

int UserInput::parseInputString(std::string const& aInputString) {
  Fields fields;
  int const result = read(aInputString, fields);
  if (result == 0) {
    mType.swap(fields.type);
    mValue.swap(fields.value);
    mDevice.swap(fields.device);
    mUser.swap(fields.user);
  }
  return result;
}

void UserInput::stamp() {
  mId = GUID::createGUID();
  mTime = static_cast<std::uint32_t>(PCTime::EpochTime());
}

}  // namespace Zelv::Controller
