#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "zelv/controller/PendingCommandContext.h"
#include "zelv/interfaces/ContextInformation.h"
#include "zelv/interfaces/GUID.h"
#include "zelv/interfaces/IBaseCommandCallback.h"

namespace Zelv::Controller {

/// The commands whose device's address is being asked for. Owns them, so that each goes with the
/// answer, with the failure of its request, or with the table, and so that no pointer is followed
/// that is none of these.
///
/// Has no lock; its owner locks.
class PendingCommands {
 public:
  /// @return what to hand in with the request.
  ContextInformation const* add(std::unique_ptr<PendingCommandContext> aCommand);

  /// The request was made. Its answer or its failure may have come before.
  void asked(ContextInformation const* aCommand, GUID const& aTransactionId);

  /// The command that an answer came for; null if there is no such command.
  std::unique_ptr<PendingCommandContext> take(ContextInformation const* aCommand);

  /// A request failed; its command is forgotten. Other identifiers do nothing.
  void failed(GUID const& aTransactionId);

  /// Forgets a callback, calling aForgotten(id) for each of its commands. They will be sent all the
  /// same.
  template <typename Forgotten>
  void forget(IBaseCommandCallback const* aCallback, Forgotten aForgotten) {
    for (auto& [context, entry] : mEntries) {
      if (entry.mCommand->mCallback == aCallback) {
        entry.mCommand->mCallback = nullptr;
        aForgotten(entry.mCommand->mCommandId);
      }
    }
  }

  std::size_t size() const { return mEntries.size(); }

 private:
  struct Entry {
    std::unique_ptr<PendingCommandContext> mCommand;
    std::optional<GUID> mTransactionId;  ///< none before asked()
  };

  void dropEarlyFailures();

  std::map<ContextInformation const*, Entry> mEntries;
  /// Failures that may be of a request that has not returned yet.
  std::vector<GUID> mEarlyFailures;
};

}  // namespace Zelv::Controller
