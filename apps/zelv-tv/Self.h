#pragma once

#include <array>
#include <mutex>
#include <string>

#include "zelv/Zelv.h"

namespace ZelvTv {

/// Who this set is: identifier, name and address as its tree has them, kept up to date. MUST live
/// until the library has stopped.
class Self : public virtual Zelv::IBaseDataCallback {
 public:
  /// Begins to follow; to be called once.
  void Begin(Zelv::IAppData& aTree);

  std::string Id() const;
  std::string Name() const;
  std::string Address() const;

  void onData(std::string const& aXPath, std::string const& aValue,
              Zelv::ContextInformation const* aContext, Zelv::GUID const& aTransactionID) override;
  void onStatus(Zelv::StatusInformation const& /*aStatus*/,
                Zelv::GUID const& /*aTransactionID*/) override {}

 private:
  std::string valueOf(std::size_t aIndex) const;

  mutable std::mutex mMutex;
  std::array<std::string, 3> mValues;
};

}  // namespace ZelvTv
