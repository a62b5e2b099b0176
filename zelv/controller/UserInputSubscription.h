#pragma once

#include <string>

#include "zelv/interfaces/GUID.h"
#include "zelv/interfaces/IBaseUserCallback.h"

namespace Zelv::Controller {

/// Who wants to hear of which type of input. A value.
class UserInputSubscription {
 public:
  /// With a new id. The callback is not owned.
  UserInputSubscription(std::string const& aType, IBaseUserCallback* aCallback,
                        std::string const& aContext);

  GUID const& getId() const { return mId; }
  std::string const& getType() const { return mType; }
  IBaseUserCallback* getCallback() const { return mCallback; }
  std::string const& getContext() const { return mContext; }

 private:
  GUID mId;
  std::string mType;
  IBaseUserCallback* mCallback;
  std::string mContext;
};

}  // namespace Zelv::Controller
