#pragma once

#include <functional>
#include <string>

#include "zelv/Zelv.h"

namespace ZelvTv {

/// Waits for one read. A read that fails may be reported more than once; only the first report of
/// either kind counts.
class FirstAnswer : public virtual Zelv::IBaseDataCallback {
 public:
  /// Receives the value, or nothing when the read failed. Called on the data worker.
  using Receiver = std::function<void(std::string const* aValue)>;

  /// Asks. The object MUST live until the library has stopped.
  void Request(Zelv::IAppData& aTree, std::string const& aXPath, Receiver aReceiver);

  void onData(std::string const& aXPath, std::string const& aValue,
              Zelv::ContextInformation const* aContext, Zelv::GUID const& aTransactionID) override;
  void onStatus(Zelv::StatusInformation const& aStatus, Zelv::GUID const& aTransactionID) override;

 private:
  void answer(std::string const* aValue);

  /// Set before the request goes out, taken away by the first answer; touched by the worker alone
  /// in between.
  Receiver mReceiver;
};

}  // namespace ZelvTv
