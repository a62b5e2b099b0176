#include "zelv/controller/PendingCommands.h"

#include <algorithm>
#include <utility>

namespace Zelv::Controller {

ContextInformation const* PendingCommands::add(std::unique_ptr<PendingCommandContext> aCommand) {
  ContextInformation const* const context = aCommand.get();
  Entry& entry = mEntries[context];
  entry.mCommand = std::move(aCommand);
  entry.mOrder = mOrder++;
  return context;
}

void PendingCommands::asked(ContextInformation const* aCommand, GUID const& aTransactionId) {
  auto const entry = mEntries.find(aCommand);
  if (entry != mEntries.end()) {
    if (std::find(mEarlyFailures.begin(), mEarlyFailures.end(), aTransactionId) !=
        mEarlyFailures.end()) {
      mEntries.erase(entry);
    } else {
      entry->second.mTransactionId = aTransactionId;
    }
  }
  dropEarlyFailures();
}

std::unique_ptr<PendingCommandContext> PendingCommands::take(ContextInformation const* aCommand) {
  auto const entry = mEntries.find(aCommand);
  if (entry == mEntries.end()) {
    return nullptr;
  }
  std::unique_ptr<PendingCommandContext> command = std::move(entry->second.mCommand);
  mEntries.erase(entry);
  dropEarlyFailures();
  return command;
}

std::vector<PendingCommands::Entry*> PendingCommands::waitingFor(std::string const& aDeviceId) {
  std::vector<Entry*> entries;
  for (auto& [context, entry] : mEntries) {
    if (!entry.mReleased && entry.mCommand->mDeviceId == aDeviceId) {
      entries.push_back(&entry);
    }
  }
  std::sort(entries.begin(), entries.end(),
            [](Entry const* aOne, Entry const* aOther) { return aOne->mOrder < aOther->mOrder; });
  return entries;
}

std::vector<PendingCommandContext> PendingCommands::release(std::string const& aDeviceId) {
  std::vector<PendingCommandContext> released;
  for (Entry* const entry : waitingFor(aDeviceId)) {
    released.push_back(*entry->mCommand);
    entry->mReleased = true;
    entry->mCommand->mCallback = nullptr;
  }
  return released;
}

bool PendingCommands::dropReleased(ContextInformation const* aCommand) {
  auto const entry = mEntries.find(aCommand);
  if (entry == mEntries.end() || !entry->second.mReleased) {
    return false;
  }
  mEntries.erase(entry);
  dropEarlyFailures();
  return true;
}

void PendingCommands::failed(GUID const& aTransactionId) {
  auto const erased = std::erase_if(
      mEntries, [&](auto const& aEntry) { return aEntry.second.mTransactionId == aTransactionId; });
  if (erased == 0) {
    mEarlyFailures.push_back(aTransactionId);
  }
  dropEarlyFailures();
}

// They are of use only while a request is under way.
void PendingCommands::dropEarlyFailures() {
  if (!mEarlyFailures.empty() &&
      std::all_of(mEntries.begin(), mEntries.end(),
                  [](auto const& aEntry) { return aEntry.second.mTransactionId.has_value(); })) {
    mEarlyFailures.clear();
  }
}

}  // namespace Zelv::Controller
