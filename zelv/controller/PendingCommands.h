#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
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

  /// The address is known: gives all that wait for it, in the order of coming. What is left of them
  /// here goes with their own answers.
  std::vector<PendingCommandContext> release(std::string const& aDeviceId);

  /// True for the answer to a command that was released already; nothing is left of it then.
  bool dropReleased(ContextInformation const* aCommand);

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
    std::uint64_t mOrder = 0;            ///< of coming
    bool mReleased = false;              ///< the pointer is still on its way
  };

  std::vector<Entry*> waitingFor(std::string const& aDeviceId);
  void dropEarlyFailures();

  std::map<ContextInformation const*, Entry> mEntries;
  /// Failures that may be of a request that has not returned yet.
  std::vector<GUID> mEarlyFailures;
  std::uint64_t mOrder = 0;
};

}  // namespace Zelv::Controller
