#include "apps/zelv-tv/InputListener.h"

#include "apps/zelv-tv/ValueText.h"

namespace ZelvTv {

void InputListener::Begin(Zelv::IAppUser& aInput) {
  for (char const* type : {"Key", "Text", ""}) {
    aInput.subscribeUser(type, this);
  }
}

void InputListener::onUserInput(std::string const& aType, std::string const& aValue,
                                std::string const& aDevice, std::string const& aUser,
                                Zelv::GUID const& /*aSubscriptionID*/) {
  mEvents.Post("input " + ValueText::ToField(aType) + " " + ValueText::ToField(aDevice) + " " +
               ValueText::ToField(aUser) + " " + ValueText::ToLine(aValue));
}

}  // namespace ZelvTv
