#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "zelv/core/AssetRequestHandler.h"
#include "zelv/interfaces/IAssetProvider.h"

namespace Zelv::Testing {

/// Keeps the requests that it is given, and does with the connection what the test says.
class FakeAssetProvider final : public IAssetProvider {
 public:
  using Reaction = std::function<void(AssetRequestHandler&)>;

  int handleAssetRequest(std::string const& aRequest, AssetRequestHandler* aHandler,
                         GUID aTransactionID) override {
    Reaction reaction;
    {
      std::lock_guard lock(mLock);
      mRequests.push_back(aRequest);
      mTransactions.push_back(aTransactionID.toString());
      reaction = mReaction;
    }
    if (reaction) {
      reaction(*aHandler);
    }
    return -1;  // nobody looks at it
  }

  void reactWith(Reaction aReaction) {
    std::lock_guard lock(mLock);
    mReaction = std::move(aReaction);
  }

  std::vector<std::string> requests() const {
    std::lock_guard lock(mLock);
    return mRequests;
  }

  std::vector<std::string> transactions() const {
    std::lock_guard lock(mLock);
    return mTransactions;
  }

 private:
  mutable std::mutex mLock;
  Reaction mReaction;
  std::vector<std::string> mRequests;
  std::vector<std::string> mTransactions;
};

}  // namespace Zelv::Testing
