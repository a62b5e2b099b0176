#include "apps/zelv-tv/FirstAnswer.h"

#include <utility>

namespace ZelvTv {

void FirstAnswer::Request(Zelv::IAppData& aTree, std::string const& aXPath, Receiver aReceiver) {
  mReceiver = std::move(aReceiver);
  aTree.requestData(aXPath, nullptr, this);
}

void FirstAnswer::onData(std::string const& /*aXPath*/, std::string const& aValue,
                         Zelv::ContextInformation const* /*aContext*/,
                         Zelv::GUID const& /*aTransactionID*/) {
  answer(&aValue);
}

void FirstAnswer::onStatus(Zelv::StatusInformation const& /*aStatus*/,
                           Zelv::GUID const& /*aTransactionID*/) {
  answer(nullptr);
}

void FirstAnswer::answer(std::string const* aValue) {
  if (Receiver const receiver = std::exchange(mReceiver, nullptr)) {
    receiver(aValue);
  }
}

}  // namespace ZelvTv
