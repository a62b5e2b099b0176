#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "zelv/interfaces/IBaseLifetimeCallback.h"

namespace Zelv::Testing {

/// What a component was sent.
struct Command {
  std::string component;
  int number;
  GUID transaction;
};

/// Writes down what it is sent, and does something then.
class Component : public virtual IBaseLifetimeCallback {
 public:
  using Reaction = std::function<void(eLifetimeCommand)>;

  Component(std::string const& aName, std::vector<Command>& aCommands, Reaction aReaction = nullptr)
      : mName(aName), mCommands(aCommands), mReaction(std::move(aReaction)) {}

  void onLifetime(eLifetimeCommand aCommand, GUID aTransactionID) override {
    mCommands.push_back({mName, aCommand, aTransactionID});
    if (mReaction) {
      mReaction(aCommand);
    }
  }

  void onStatus(StatusInformation const&, GUID const&) override {}

 private:
  std::string mName;
  std::vector<Command>& mCommands;
  Reaction mReaction;
};

}  // namespace Zelv::Testing
