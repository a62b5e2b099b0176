#include "zelv/controller/CommandTasks.h"

#include <utility>

namespace Zelv::Controller {

void CommandTasks::push(std::unique_ptr<CommandControllerTask> aTask) {
  mEntries.push_back({std::move(aTask), false});
}

bool CommandTasks::pushFromNetwork(std::unique_ptr<CommandControllerTask> aTask) {
  std::size_t const bytes = aTask->getText().size();
  if (mFromNetwork >= MaxFromNetwork || mBytesFromNetwork + bytes > MaxBytesFromNetwork) {
    return false;
  }
  mEntries.push_back({std::move(aTask), true});
  ++mFromNetwork;
  mBytesFromNetwork += bytes;
  return true;
}

std::unique_ptr<CommandControllerTask> CommandTasks::take() {
  if (mEntries.empty()) {
    return nullptr;
  }
  Entry entry = std::move(mEntries.front());
  mEntries.pop_front();
  if (entry.mFromNetwork) {
    --mFromNetwork;
    mBytesFromNetwork -= entry.mTask->getText().size();
  }
  return std::move(entry.mTask);
}

void CommandTasks::clear() {
  mEntries.clear();
  mFromNetwork = 0;
  mBytesFromNetwork = 0;
}

}  // namespace Zelv::Controller
