#include "zelv/controller/UserInputSubscription.h"

namespace Zelv::Controller {

UserInputSubscription::UserInputSubscription(std::string const& aType, IBaseUserCallback* aCallback,
                                             std::string const& aContext)
    : mId(GUID::createGUID()), mType(aType), mCallback(aCallback), mContext(aContext) {}

}  // namespace Zelv::Controller
